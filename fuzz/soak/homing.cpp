#include "soak/homing.h"

#include <thread>

#include "resources/resource_ids.h"
#include "support/dialog_driver.h"
#include "usage/require.h"

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using simulator::Axis;
using simulator::AxisName;
using test_support::DialogDriver;

/// After that the operator has had enough of it.
constexpr auto Patience = 20s;
constexpr auto LongestClosing = 20s;
constexpr double Far = 50'000;

/// The hand brings the axis that the dialog is about away from its origin, or past it.
void UseHand(simulator::StageModel& stage, bool aboutX, bool past) {
    Axis& axis = stage.At(aboutX ? AxisName::X : AxisName::Y);
    if (axis.AtRest()) {
        axis.HandMove(axis.Origin() - axis.Counts() + (past ? Far / 5 : -Far));
    }
}

class Operator {
  public:
    Operator(test_support::SimulatedController& controller, simulation::Chance& chance)
        : controller_(controller), chance_(chance) {}

    /// Works the dialog until it has gone. Whether the operator went through with it.
    bool Work(const DialogDriver& dialog) {
        const bool leaves = chance_.OneIn(2);
        const bool works = !leaves || chance_.OneIn(2);
        const auto end =
            Clock::now() + (leaves ? std::chrono::milliseconds(chance_.Between(0, 1500))
                                   : std::chrono::milliseconds(Patience));
        while (dialog.Exists() && Clock::now() < end) {
            if (works) {
                Step(dialog);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(chance_.Between(20, 150)));
        }
        if (!dialog.Exists()) {
            return true;
        }
        while (dialog.Exists()) {
            Require(Clock::now() < end + LongestClosing, "the homing dialog does not close");
            chance_.OneIn(3) ? dialog.Close() : dialog.Press(IDCANCEL);
            std::this_thread::sleep_for(20ms);
        }
        return false;
    }

  private:
    void Step(const DialogDriver& dialog) {
        const std::string text = dialog.Text(IDC_HOMING_TEXT);
        const bool aboutX = text.find("left limit") != std::string::npos ||
                            text.find("to the right") != std::string::npos;
        const bool asks = dialog.IsEnabled(IDOK);
        controller_->With([&](simulator::StageModel& stage) { UseHand(stage, aboutX, !asks); });
        if (asks) {
            dialog.Press(IDOK);
        }
    }

    test_support::SimulatedController& controller_;
    simulation::Chance& chance_;
};

}  // namespace

void HomeWithOperator(host_tool::ModuleLibrary& module, bool automatic,
                      test_support::SimulatedController& controller, Tally& tally,
                      simulation::Chance& chance) {
    std::thread host([&] { module.OVISK_ZbrCmd(OviskCmd_Home, 0); });
    const DialogDriver dialog(automatic ? "Warning" : "Axis Homing In Progress");
    const bool wentThrough = Operator(controller, chance).Work(dialog);
    host.join();
    ++tally.homings;
    tally.homingsBrokenOff += wentThrough ? 0U : 1U;
}

}  // namespace soak
