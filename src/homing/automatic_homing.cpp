#include "homing/automatic_homing.h"

#include <string>

#include "link/command_queue.h"
#include "log/zbr_log.h"
#include "platform/guard.h"
#include "resources/resource_ids.h"

namespace {

using State = AutoHomingState;

/// The one record, for the life of the module.
constinit State record;
std::atomic<bool> dialogOpen{false};

/// Set at dialog start, read by the worker.
std::atomic<HWND> AutoHomingDialog{nullptr};
/// The dialog's thread only.
HBITMAP AutoHomingBitmap = nullptr;

/// Takes back what the run before has posted and the worker has not sent: the operator is asked
/// anew, and a Cancel must not be followed by a start.
void WithdrawStarts() {
    WithdrawCommand(AutoXRequest);
    WithdrawCommand(AutoYRequest);
}

void StartDialog(HWND dialog, State& homing) {
    AutoHomingDialog.store(dialog);
    PlaceHomingDialog(dialog);
    SetWindowTextW(dialog, homing.caption);
    SetDlgItemTextW(dialog, IDC_HOMING_TEXT, homing.text);
    AutoHomingBitmap = LoadPicture(IDB_COLUMN_UP);
    ShowPicture(dialog, AutoHomingBitmap);
    EndHoming(homing.state, HomingEnd::Cancelled);
    homing.state.Begin(State::Confirmation);
    WithdrawStarts();
    SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
}

/// The start is queued before the state tells the worker to look for its end. A start that a lost
/// line does not take ends the run; so has the worker, if the line was lost meanwhile.
void PressOk(HWND dialog, State& homing) {
    const HomingState::Moment now = homing.state.Now();
    if (now.state != State::Confirmation) {
        return;
    }
    if (!PostCommand(HomingXId, AutoXRequest)) {
        EndHoming(homing.state, now, HomingEnd::Failed);
    } else if (!homing.state.MoveOn(now, State::XReturn)) {
        WithdrawStarts();
    }
    EndDialog(dialog, IDOK);
}

void Leave(HWND dialog, State& homing) {
    EndHoming(homing.state, HomingEnd::Cancelled);
    EndDialog(dialog, 0);
}

/// A status field by its first byte, taken as signed: one of 128 or more has not finished.
signed char Status(const char* field) {
    return static_cast<signed char>(field[0]);
}

/// Writes the codes of the first characters of the first `count` fields.
void LogCodes(const char* name, const HomingCondition& condition, std::size_t count) {
    std::string label = name;
    for (std::size_t number = 1; number <= count; ++number) {
        label += " p" + std::to_string(number) + "=";
        WriteLine(label, Decimal{std::int32_t{Status(condition.Field(number))}});
        label.clear();
    }
    WriteLine("\n");
}

/// Whether the axis whose status stands in this field has finished. `failed` is set when it has
/// failed, or when nothing could be learnt: a reply without the field tells no more than none.
bool IsCompleted(std::size_t field, const char* name, bool& failed) {
    failed = true;
    HomingCondition condition;
    if (!condition.Query() || condition.Field(field) == nullptr) {
        return false;
    }
    LogCodes(name, condition, field);
    const signed char status = Status(condition.Field(field));
    failed = status > HomingFinished;
    return status == HomingFinished;
}

/// The dialog takes its state first and then back what is posted, this thread the other way round:
/// one of the two sees the start, which only this thread can send. So a run that is broken off
/// meanwhile does not start Y.
void StartY(State& homing, HomingState::Moment now) {
    if (!PostCommand(HomingYId, AutoYRequest)) {
        EndHoming(homing.state, now, HomingEnd::Failed);
    } else if (!homing.state.MoveOn(now, State::YReturn)) {
        WithdrawCommand(AutoYRequest);
    }
}

INT_PTR Handle(HWND dialog, State& homing, UINT message, WPARAM wParam) {
    switch (message) {
        case WM_INITDIALOG:
            StartDialog(dialog, homing);
            return TRUE;
        case WM_COMMAND:
            if (wParam == IDOK) {
                PressOk(dialog, homing);
            } else if (wParam == IDCANCEL) {
                Leave(dialog, homing);
            }
            return TRUE;
        case BreakOffMessage:
            if (wParam == homing.state.Now().run) {
                EndDialog(dialog, 0);  // The run is this dialog's own.
            }
            return TRUE;
        case WM_CLOSE:
            Leave(dialog, homing);
            return TRUE;
        case WM_DESTROY:
            // The state is left alone: homing runs on after the dialog has gone.
            AutoHomingDialog.store(nullptr);
            DeleteObject(AutoHomingBitmap);
            AutoHomingBitmap = nullptr;
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

void RunAutoHoming(HWND parent) {
    RunHomingDialog(IDD_AUTO_HOMING, parent, MyAutoHomingDialogProc, dialogOpen);
}

INT_PTR CALLBACK MyAutoHomingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    return Guarded(INT_PTR{TRUE}, [=] { return Handle(dialog, record, message, wParam); });
}

void BreakOffAutoHoming() {
    BreakOffHoming(record.state, AutoHomingDialog.load());
}

void LoseAutoHoming() {
    const HomingState::Moment now = record.state.Now();
    if (now.state == State::XReturn || now.state == State::YReturn) {
        EndHoming(record.state, now, HomingEnd::Failed);
    }
}

bool AutoHomingRuns() {
    return record.state.Value() != HomingIdle;
}

int AutoHomingAxis() {
    const std::uint32_t state = record.state.Value();
    return state == State::XReturn ? 1 : state == State::YReturn ? 2 : 0;
}

void MyAutoHomingStep() {
    const HomingState::Moment now = record.state.Now();
    const bool x = now.state == State::XReturn;
    if ((!x && now.state != State::YReturn) || CommandWaits(x ? HomingXId : HomingYId)) {
        return;
    }
    bool failed = false;
    const bool completed =
        x ? IsCompleted(XStatusField, "MyIsCncOriginRestorationCompletedX", failed)
          : MyIsCncOriginRestorationCompletedY(failed);
    if (completed && x) {
        StartY(record, now);
    } else if (completed) {
        EndHoming(record.state, now, HomingEnd::Finished);
    } else if (failed) {
        WriteLine("HOMING ERROR OCCURRED!\n");
        EndHoming(record.state, now, HomingEnd::Failed);  // Unless a new run has begun.
    }
}

bool MyIsCncOriginRestorationCompletedY(bool& failed) {
    return IsCompleted(YStatusField, "MyIsCncOriginRestorationCompletedY", failed);
}
