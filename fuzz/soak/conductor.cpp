#include "soak/conductor.h"

#include <array>
#include <atomic>
#include <cmath>
#include <string>

#include "controller/log_tap.h"
#include "soak/clerks.h"
#include "soak/homing.h"
#include "support/machine.h"
#include "usage/require.h"
#include "usage/usage.h"

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
using simulation::Chance;
using simulator::AxisName;
using simulator::Fault;
using test_support::Eventually;

constexpr double CountsPerUnit = 1'000'000;
constexpr double CountsPerRecordUnit = 100;
constexpr std::int64_t Reach = 150'000;
/// Those whose trail ends soon after they do.
constexpr std::array Faults{Fault::Silence,   Fault::Dropped,     Fault::Delay,    Fault::Split,
                            Fault::Doubled,   Fault::DroppedByte, Fault::Garbled,  Fault::Nul,
                            Fault::MissingCr, Fault::MissingLf,   Fault::Oversize, Fault::Refusal,
                            Fault::AxisError};
constexpr double FaultProbability = 0.01;
/// What a late reply and the exchanges after it may still spoil.
constexpr auto Settling = 3s;
constexpr auto LongestStale = 10s;
constexpr auto LongestMove = 20s;

constexpr std::intptr_t UnawaitedMove = 0;

/// The end of the move with that number.
std::atomic<std::intptr_t> awaitedMove{-1};
std::atomic<int> timesTold{0};
std::atomic<bool> toldOfError{false};

void OnMoved(bool finished, bool error, const McndReply*, std::intptr_t number) {
    if (number == awaitedMove) {
        toldOfError = error || !finished;
        ++timesTold;
    }
}

class Life {
  public:
    Life(test_support::SimulatedController& controller, Chance& chance, Tally& tally)
        : controller_(controller),
          chance_(chance),
          tally_(tally),
          automatic_(chance.OneIn(2)),
          module_(OVISK_LIBRARY) {
        module_.OVISK_ZbrCmd(OviskCmd_Startup, automatic_ ? 1 : 0);
    }

    void Run(std::chrono::seconds length, const std::function<void()>& look) {
        const auto end = Clock::now() + length;
        {
            const Clerks clerks(module_, tally_, chance_);
            do {
                MakeTrouble();
                ComeToRest();
                for (int moves = 0; moves < 3; ++moves) {
                    MoveAndWait();
                }
                Home();
            } while (Clock::now() < end);
        }
        AwaitStage();
        look();
        Stop();
    }

  private:
    void SetFaults(double probability) {
        controller_->With([&](simulator::Device& device) {
            for (const Fault fault : Faults) {
                device.FaultsOfLine().Set(fault, probability);
            }
        });
    }

    std::uint64_t FaultsSoFar() {
        return controller_->With([](simulator::Device& device) {
            std::uint64_t count = 0;
            for (const Fault fault : Faults) {
                count += device.FaultsOfLine().Count(fault);
            }
            return count;
        });
    }

    void MakeTrouble() {
        const std::uint64_t before = FaultsSoFar();
        SetFaults(FaultProbability);
        const auto end = Clock::now() + std::chrono::milliseconds(chance_.Between(2000, 5000));
        while (Clock::now() < end) {
            Move(UnawaitedMove);
            std::this_thread::sleep_for(std::chrono::milliseconds(chance_.Between(50, 1000)));
            if (chance_.OneIn(8)) {
                module_.OVISK_ZbrCmd(OviskCmd_Startup, automatic_ ? 1 : 0);
            }
            controller_->With([&](simulator::StageModel& stage) {
                const auto number = static_cast<int>(chance_.Between(1, 16));
                stage.SetSwitch(number, static_cast<std::int32_t>(chance_.Between(0, 1)));
            });
        }
        SetFaults(0);
        tally_.faults += FaultsSoFar() - before;
    }

    void ComeToRest() {
        std::this_thread::sleep_for(Settling);
        AwaitStage();
    }

    bool Move(std::intptr_t number) {
        std::array<double, 3> units{};
        for (double& unit : units) {
            unit = static_cast<double>(chance_.Between(-Reach, Reach)) / CountsPerUnit;
        }
        ++tally_.moves;
        return module_.ZbOvisk_CncGotoAbsoluteNotifyWorld(units[0], units[1], units[2], OnMoved,
                                                          number);
    }

    /// A move on a good line: accepted, told once, without an error, and the record is there.
    void MoveAndWait() {
        timesTold = 0;
        awaitedMove = ++moveNumber_;
        Require(Move(moveNumber_), "a move on a good line was refused");
        Require(Eventually([] { return timesTold > 0; }, LongestMove),
                "the end of a move was not told");
        AwaitStage();
        Require(timesTold == 1 && !toldOfError, "the end of a move was told wrongly");
        ++tally_.movesTold;
    }

    /// Until the record shows the stage at rest.
    void AwaitStage() {
        Require(Eventually([this] { return ShowsTheStage(); }, LongestStale),
                "the record is stale");
    }

    bool ShowsTheStage() {
        const auto [place, rests] = controller_->With([](simulator::StageModel& stage) {
            std::array<std::int32_t, 3> counts{};
            bool atRest = true;
            for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
                counts[static_cast<std::size_t>(name)] = stage.At(name).Counts();
                atRest = atRest && stage.At(name).AtRest();
            }
            return std::pair(counts, atRest);
        });
        OviskData data;
        module_.ZbOvisk_GetOviskData(data);
        const auto shown = [](std::int32_t counts) {
            return static_cast<std::int32_t>(std::lround(counts / CountsPerRecordUnit));
        };
        return rests && data.cposmr.x == shown(place[0]) && data.cposmr.y == shown(place[1]) &&
               data.cposmr.z == shown(place[2]);
    }

    void Home() {
        HomeWithOperator(module_, automatic_, controller_, tally_, chance_);
        const bool ended = Eventually([this] { return !HomesItself(); }, 60s);
        Require(ended, "the automatic homing does not end");
        controller_->With([](simulator::StageModel& stage) {
            stage.At(AxisName::X).StopManualHome();
            stage.At(AxisName::Y).StopManualHome();
        });
    }

    bool HomesItself() {
        // Y begins when the worker has seen X end, so a short pause is not the end.
        for (int looks = 0; looks < 10; ++looks) {
            if (controller_->With([](simulator::StageModel& stage) {
                    return stage.At(AxisName::X).HomingAutomatically() ||
                           stage.At(AxisName::Y).HomingAutomatically();
                })) {
                return true;
            }
            std::this_thread::sleep_for(100ms);
        }
        return false;
    }

    void Stop() {
        const std::size_t threads = MeasureUsage().threads;
        const auto start = Clock::now();
        module_.OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
        Require(Clock::now() - start < 1900ms, "the worker does not end");
        Require(Eventually([&] { return MeasureUsage().threads < threads; }),
                "the worker's thread stays");
    }

    test_support::SimulatedController& controller_;
    Chance& chance_;
    Tally& tally_;
    const bool automatic_;
    host_tool::ModuleLibrary module_;
    std::intptr_t moveNumber_ = 0;
};

}  // namespace

void LiveOnce(test_support::SimulatedController& controller, std::chrono::seconds length,
              Chance& chance, Tally& tally, const std::function<void()>& look) {
    test_support::WriteSettings("[Ovisk]\nCmdPoll=" + std::to_string(chance.Between(1, 80)) +
                                "\nSerialLog=" + std::to_string(chance.Between(0, 1)) + "\n");
    Life life(controller, chance, tally);
    life.Run(length, look);
    ++tally.lives;
}

}  // namespace soak
