#include "failing_calls/operations.h"
#include "native/headless.h"
#include "native/virtual_time.h"
#include "resources/resource_ids.h"

namespace failing {
namespace {

using namespace std::chrono_literals;
using simulator::AxisName;
using simulator::HomeStatus;

constexpr auto Patience = 15s;       ///< then the dialog is left
constexpr auto FailingEnds = 20s;    ///< if it can't be left
constexpr auto LongestHoming = 60s;  ///< then nothing helps any more

struct Operator {
    World& world;
    bool cancels;
    bool isBack = false;  ///< the Home command has returned
    bool askedX = false;
    bool askedY = false;
    bool stoppedX = false;
    bool stoppedY = false;
};

/// Which may be sent from now on, once in a run.
void AllowOnce(World& world, bool& asked, const char* request) {
    if (!std::exchange(asked, true)) {
        world.line.Allow(request);
    }
}

void Press(HWND window, int button) {
    PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

/// Automatic homing has nothing to stop it with.
void Cancel(Operator& self, const headless::DialogView& dialog) {
    if (dialog.resource == IDD_MANUAL_HOMING) {
        AllowOnce(self.world, self.stoppedX, "@CRZMX=0\r\n");
        AllowOnce(self.world, self.stoppedY, "@CRZMY=0\r\n");
    }
    Press(dialog.window, IDCANCEL);
}

/// The hand moves the axis past its origin.
void MoveByHand(simulator::Axis& axis) {
    if (axis.Home() == HomeStatus::UnderWay && axis.AtRest()) {
        constexpr double Beyond = 5000;
        const double way = axis.Origin() - axis.Counts();
        axis.HandMove(way + (way < 0 ? -Beyond : Beyond));
    }
}

void ServeManual(Operator& self, const headless::DialogView& dialog) {
    simulator::StageModel& stage = self.world.line.Stage();
    const HomeStatus x = stage.At(AxisName::X).Home();
    if (self.cancels && x == HomeStatus::UnderWay) {
        return Cancel(self, dialog);
    }
    if (dialog.Find(IDOK)->enabled) {
        AllowOnce(self.world, self.askedX, "@CRZMX=1\r\n");
        if (x == HomeStatus::Finished) {
            AllowOnce(self.world, self.askedY, "@CRZMY=1\r\n");
        }
        Press(dialog.window, IDOK);
    }
    MoveByHand(stage.At(AxisName::X));
    MoveByHand(stage.At(AxisName::Y));
}

void ServeAutomatic(Operator& self, const headless::DialogView& dialog) {
    AllowOnce(self.world, self.askedX, "@CRZAX\r\n");
    AllowOnce(self.world, self.askedY, "@CRZAY\r\n");
    Press(dialog.window, IDOK);
}

DWORD WINAPI Operate(LPVOID argument) {
    Operator& self = *static_cast<Operator*>(argument);
    const auto begin = virtual_time::Elapsed();
    while (!self.isBack) {
        const auto passed = virtual_time::Elapsed() - begin;
        Require(passed < LongestHoming, "a dialog that can't be left");
        if (passed > FailingEnds) {
            End();
        }
        for (const headless::DialogView& dialog : headless::OpenDialogs()) {
            if (!dialog.visible || dialog.resource == IDD_PANEL) {
                continue;
            }
            if (passed > Patience) {
                Cancel(self, dialog);
            } else if (dialog.resource == IDD_MANUAL_HOMING) {
                ServeManual(self, dialog);
            } else {
                ServeAutomatic(self, dialog);
            }
        }
        Sleep(300);
    }
    return 0;
}

}  // namespace

void Home(World& world, bool cancels) {
    world.line.AllowQueries("@CCND?\r\n");
    Operator self{.world = world, .cancels = cancels};
    const HANDLE thread = CreateThread(nullptr, 0, Operate, &self, 0, nullptr);
    Require(world.Module().OVISK_ZbrCmd(OviskCmd_Home, 0), "a homing answers false");
    self.isBack = true;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    if (world.startData == 1) {
        WaitFor([&] { return world.line.Stage().At(AxisName::Y).Home() == HomeStatus::Finished; },
                Patience);
    }
    Pass(500ms);
}

namespace {

std::optional<HWND> Panel() {
    for (const headless::DialogView& dialog : headless::OpenDialogs()) {
        if (dialog.resource == IDD_PANEL) {
            return dialog.window;
        }
    }
    return std::nullopt;
}

void PressAndWait(HWND panel, int button) {
    Press(panel, button);
    Pass(700ms);
}

}  // namespace

void UsePanel(World& world) {
    const HWND panel = Panel().value();
    headless::TypeText(panel, IDC_TARGET, "0.1, -0.2");
    headless::TypeText(panel, IDC_LIGHT_1_PERCENT, "50");
    headless::TypeText(panel, IDC_SEND_TEXT, "@LBRT4=100");
    // An empty box sends its line end alone.
    for (const char* request : {"@MMVAL=+100000,-200000,+0\r\n", "@LBRT1=5000\r\n", "@LBRT1?",
                                "@LBRT4=100\r\n", "\r\n", "@SMOD=1\r\n"}) {
        world.line.Allow(request);
    }
    world.line.AllowQueries("@MCND?\r\n");
    for (const int button : {IDC_GET_POSITION, IDC_GET_STATUS, IDC_SET_LIGHT_1, IDC_SEND,
                             IDC_REMOTE_ENABLE, IDC_CLOSE_COMM, IDC_OPEN_COMM, IDC_SET_POSITION}) {
        PressAndWait(panel, button);
    }
    PressAndWait(panel, IDC_STREAM_POSITION);
    Pass(3s);
    PressAndWait(panel, IDC_STREAM_POSITION);
    PressAndWait(panel, IDC_CLOSE);
}

void RepairPanel() {
    const std::optional<HWND> panel = Panel();
    if (!panel) {
        return;
    }
    headless::TypeText(*panel, IDC_PORT, std::to_string(PortNumber));
    headless::TypeText(*panel, IDC_BAUD_RATE, "38400");
    headless::TypeText(*panel, IDC_BYTE_SIZE, "8");
    headless::TypeText(*panel, IDC_PARITY, "0");
    headless::TypeText(*panel, IDC_STOP_BITS, "0");
    PressAndWait(*panel, IDC_GET_POSITION);
    PressAndWait(*panel, IDC_STREAM_POSITION);
    const auto readout = [&] { return headless::ViewOf(*panel)->Find(IDC_POSITION)->text; };
    const std::string before = readout();
    Pass(5s);
    Require(readout() != before, "the panel's stream stands still");
    PressAndWait(*panel, IDC_STREAM_POSITION);
}

}  // namespace failing
