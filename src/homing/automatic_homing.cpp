#include "homing/automatic_homing.h"

#include <string>

#include "homing/homing_condition.h"
#include "homing/homing_dialog.h"
#include "link/command_queue.h"
#include "log/log_line.h"
#include "platform/guarded_procedure.h"
#include "resources/resource_ids.h"

namespace {

using State = AutoHomingState;

/// The one record, for the life of the module.
constinit State record;
std::atomic<bool> dialogOpen{false};

/// The dialog's thread only.
HBITMAP AutoHomingBitmap = nullptr;

/// Takes back what the run before has posted and the worker has not sent: the operator is asked
/// anew, and a Cancel must not be followed by a start.
void WithdrawStarts() {
    WithdrawCommand(AutoXRequest);
    WithdrawCommand(AutoYRequest);
}

void StartDialog(HWND dialog, State& homing) {
    PlaceHomingDialog(dialog);
    SetWindowTextW(dialog, homing.caption);
    SetDlgItemTextW(dialog, IDC_HOMING_TEXT, homing.text);
    AutoHomingBitmap = LoadPicture(IDB_COLUMN_UP);
    ShowPicture(dialog, AutoHomingBitmap);
    homing.state.Begin(State::Confirmation);
    WithdrawStarts();
    SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE);
}

/// The start is queued before the state tells the worker to look for its end.
void PressOk(HWND dialog, State& homing) {
    if (homing.state.Value() == State::Confirmation) {
        PostCommand(HomingXId, AutoXRequest);
        homing.state.Set(State::XReturn);
        EndDialog(dialog, IDOK);
    }
}

void Leave(HWND dialog, State& homing) {
    homing.state.Set(HomingIdle);
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
    WritePiece("\n");
}

enum class Progress { UnderWay, Finished, Failed };

/// How the axis whose status stands in this field is getting on. A reply without the field tells no
/// more than none at all.
Progress LookAt(std::size_t field, const char* name) {
    HomingCondition condition;
    if (!condition.Query() || !condition.Has(field)) {
        return Progress::Failed;
    }
    LogCodes(name, condition, field);
    const signed char status = Status(condition.Field(field));
    if (status == HomingFinished) {
        return Progress::Finished;
    }
    return status > HomingFinished ? Progress::Failed : Progress::UnderWay;
}

/// Ends the run after a failure, unless a new one has begun.
void Fail(State& homing, HomingState::Moment now) {
    WriteLine("HOMING ERROR OCCURRED!\n");
    homing.state.MoveOn(now, HomingIdle);
}

void StepX(State& homing, HomingState::Moment now) {
    switch (LookAt(XStatusField, "MyIsCncOriginRestorationCompletedX")) {
        case Progress::Finished:
            // A run that was broken off meanwhile must not start Y. The dialog takes its state
            // first and then what is posted, this thread the other way round: one of the two sees
            // the start, which only this thread can send.
            PostCommand(HomingYId, AutoYRequest);
            if (!homing.state.MoveOn(now, State::YReturn)) {
                WithdrawCommand(AutoYRequest);
            }
            break;
        case Progress::Failed:
            Fail(homing, now);
            break;
        case Progress::UnderWay:
            break;
    }
}

void StepY(State& homing, HomingState::Moment now) {
    bool failed = false;
    if (MyIsCncOriginRestorationCompletedY(failed)) {
        homing.state.MoveOn(now, HomingIdle);
    } else if (failed) {
        Fail(homing, now);
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
        case WM_CLOSE:
            Leave(dialog, homing);
            return TRUE;
        case WM_DESTROY:
            // The state is left alone: homing runs on after the dialog has gone.
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
    return GuardedProcedure([=] { return Handle(dialog, record, message, wParam); });
}

bool AutoHomingRuns() {
    return record.state.Value() != HomingIdle;
}

void MyAutoHomingStep() {
    State& homing = record;
    const HomingState::Moment now = homing.state.Now();
    if (now.state == State::XReturn && !CommandWaits(HomingXId)) {
        StepX(homing, now);
    } else if (now.state == State::YReturn && !CommandWaits(HomingYId)) {
        StepY(homing, now);
    }
}

bool MyIsCncOriginRestorationCompletedY(bool& failed) {
    const Progress progress = LookAt(YStatusField, "MyIsCncOriginRestorationCompletedY");
    failed = progress == Progress::Failed;
    return progress == Progress::Finished;
}
