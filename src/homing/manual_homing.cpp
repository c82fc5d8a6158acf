#include "homing/manual_homing.h"

#include <array>

#include "link/command_queue.h"
#include "platform/guard.h"
#include "resources/resource_ids.h"

namespace {

using State = ManualHomingState;

/// The worker asks the dialog to go on: wParam is the state, lParam the run that it has looked at.
constexpr UINT AdvanceMessage = WM_APP + 1;

/// The one record, for the life of the module.
constinit State record;
std::atomic<bool> dialogOpen{false};

/// Set at dialog start, read by the worker.
std::atomic<HWND> ManualHomingDialog{nullptr};
/// The pictures of the four states. The dialog's thread only.
std::array<HBITMAP, 4> ManualHomingBitmaps{};

/// A button that is disabled while it has the focus takes the keyboard with it, Escape included. So
/// the focus goes to the text, where Enter means OK when that can be pressed, and else nothing: on
/// Cancel, a second Enter would end the procedure.
void EnableOk(HWND dialog, bool enabled) {
    if (!enabled) {
        const HWND text = GetDlgItem(dialog, IDC_HOMING_TEXT);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(text), TRUE);
    }
    EnableWindow(GetDlgItem(dialog, IDOK), enabled ? TRUE : FALSE);
}

void Show(HWND dialog, const WCHAR* text, bool okEnabled, std::uint32_t state) {
    SetDlgItemTextW(dialog, IDC_HOMING_TEXT, text);
    EnableOk(dialog, okEnabled);
    ShowPicture(dialog, ManualHomingBitmaps[state - State::LeftLimit]);
}

void StartDialog(HWND dialog, State& homing) {
    ManualHomingDialog.store(dialog);
    PlaceHomingDialog(dialog);
    SetWindowTextW(dialog, homing.xCaption);
    for (std::size_t i = 0; i < ManualHomingBitmaps.size(); ++i) {
        ManualHomingBitmaps[i] = LoadPicture(IDB_TABLE_LEFT + static_cast<int>(i));
    }
    SetDlgItemTextW(dialog, IDC_HOMING_TEXT, homing.xPromptText);
    ShowPicture(dialog, ManualHomingBitmaps[0]);
    homing.state.Begin(State::LeftLimit);
}

/// The command goes first and the state last: the worker never looks at an axis whose start is not
/// queued, and sees a state only when the dialog shows it. A start that a lost line does not take
/// ends the run; so has the worker, if the line was lost meanwhile: a start is then taken back.
void StartAxis(HWND dialog, State& homing, HomingState::Moment now, bool isPosted,
               const WCHAR* text) {
    const std::uint32_t next = now.state + 1;
    if (!isPosted) {
        EndHoming(homing.state, now, HomingEnd::Failed);
        EndDialog(dialog, 0);
        return;
    }
    Show(dialog, text, false, next);
    if (!homing.state.MoveOn(now, next)) {
        WithdrawCommand(ManualXStartRequest);
        WithdrawCommand(ManualYStartRequest);
    }
}

void PressOk(HWND dialog, State& homing) {
    const HomingState::Moment now = homing.state.Now();
    if (now.state == State::LeftLimit) {
        StartAxis(dialog, homing, now, MyPostManualHomingX(true), homing.xMoveText);
    } else if (now.state == State::FrontLimit) {
        StartAxis(dialog, homing, now, MyPostManualHomingY(true), homing.yMoveText);
    }
}

bool PostStop(std::uint32_t state) {
    return state == State::XReturn   ? MyPostManualHomingX(false)
           : state == State::YReturn ? MyPostManualHomingY(false)
                                     : false;
}

/// Ends the procedure even if there is no memory left for the stop.
void PressCancel(HWND dialog, State& homing) {
    Guarded(false, [&] { return PostStop(homing.state.Value()); });
    EndHoming(homing.state, HomingEnd::Cancelled);
    EndDialog(dialog, IDCANCEL);
}

/// Does what the worker asks for, unless the run or its state is another one by now.
void Advance(HWND dialog, State& homing, std::uint32_t state, std::uint32_t run) {
    const HomingState::Moment now = homing.state.Now();
    if (now.run != run || now.state != state) {
        return;
    }
    if (state == State::XReturn) {
        Show(dialog, homing.yPromptText, true, State::FrontLimit);
        homing.state.MoveOn(now, State::FrontLimit);
    } else if (state == State::YReturn) {
        EndDialog(dialog, 1);
        EndHoming(homing.state, now, HomingEnd::Finished);
    }
}

void LeaveDialog(State& homing) {
    ManualHomingDialog.store(nullptr);
    EndHoming(homing.state, HomingEnd::Cancelled);  // By the close box.
    for (HBITMAP& picture : ManualHomingBitmaps) {
        DeleteObject(picture);
        picture = nullptr;
    }
}

INT_PTR Handle(HWND dialog, State& homing, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            StartDialog(dialog, homing);
            return TRUE;
        case WM_COMMAND:
            if (wParam == IDOK) {
                PressOk(dialog, homing);
            } else if (wParam == IDCANCEL) {
                PressCancel(dialog, homing);
            }
            return TRUE;
        case AdvanceMessage:
            Advance(dialog, homing, static_cast<std::uint32_t>(wParam),
                    static_cast<std::uint32_t>(lParam));
            return TRUE;
        case BreakOffMessage:
        case WM_CLOSE:
            EndDialog(dialog, 0);
            return TRUE;
        case WM_DESTROY:
            LeaveDialog(homing);
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

void RunManualHoming(HWND parent) {
    RunHomingDialog(IDD_MANUAL_HOMING, parent, MyManualHomingDialogProc, dialogOpen);
}

INT_PTR CALLBACK MyManualHomingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return Guarded(INT_PTR{TRUE}, [=] { return Handle(dialog, record, message, wParam, lParam); });
}

void BreakOffManualHoming() {
    BreakOffHoming(record.state, ManualHomingDialog.load());
}

bool ManualHomingRuns() {
    return record.state.Value() != HomingIdle;
}

int ManualHomingAxis() {
    const std::uint32_t state = record.state.Value();
    return state == HomingIdle ? 0 : state <= State::XReturn ? 1 : 2;
}

void MyManualHomingStep() {
    const HomingState::Moment now = record.state.Now();
    const HWND dialog = ManualHomingDialog.load();
    if (dialog == nullptr) {
        return;  // It has just gone, and the state with it.
    }
    const bool x = now.state == State::XReturn;
    if ((!x && now.state != State::YReturn) || CommandWaits(x ? HomingXId : HomingYId)) {
        return;
    }
    HomingCondition condition;
    if (!condition.Query()) {
        return;
    }
    const char* const status = condition.Field(x ? XStatusField : YStatusField);
    if (status != nullptr && status[0] == HomingFinished) {
        PostMessageW(dialog, AdvanceMessage, now.state, static_cast<LPARAM>(now.run));
    }
}

bool MyPostManualHomingX(bool on) {
    return PostCommand(HomingXId, on ? ManualXStartRequest : ManualXStopRequest);
}

bool MyPostManualHomingY(bool on) {
    return PostCommand(HomingYId, on ? ManualYStartRequest : ManualYStopRequest);
}
