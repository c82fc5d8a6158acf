#pragma once

#include "homing/homing_procedure.h"

/// Manual homing: the operator moves the stage by hand, the controller finds the origin on the way.
/// A dialog leads through X and then Y; the worker sees from the controller's condition when an
/// axis has finished and asks the dialog to go on. The dialog's thread alone changes the dialog and
/// the state, so that Cancel wins over whatever the worker has under way.
struct ManualHomingState {
    enum : std::uint32_t {
        LeftLimit = 2,   ///< the operator brings the stage to the left limit
        XReturn = 3,     ///< X origin return started, the operator moves the stage right
        FrontLimit = 4,  ///< the operator brings the stage to the front limit
        YReturn = 5,     ///< Y origin return started, the operator moves the stage back
    };

    HomingState state;
    const WCHAR* warningCaption = WIDE("Warning");
    const WCHAR* warningText = WIDE(
        "You are about to home the stage.\n\n\nPress OK to continue or\nPress Cancel to abort.");
    const WCHAR* xCaption = WIDE("Axis Homing In Progress");
    const WCHAR* xPromptText = WIDE("Press OK when at the left limit");
    const WCHAR* xMoveText = WIDE("Move the stage slowly to the right");
    const WCHAR* yCaption = WIDE("Axis Homing In Progress");
    const WCHAR* yPromptText = WIDE("Press OK when at the front limit");
    const WCHAR* yMoveText = WIDE("Move the stage slowly to the back");
};

/// Opens the dialog on the caller's thread and returns when it has ended. Does nothing while it is
/// open already.
void RunManualHoming(HWND parent);

INT_PTR CALLBACK MyManualHomingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/// True while the worker has to call the step.
bool ManualHomingRuns();

/// The axis that the operator has come to: 1 X, 2 Y, 0 none.
int ManualHomingAxis();

/// The line is lost: the run that is under way has failed, and its dialog closes. The worker.
void BreakOffManualHoming();

/// One look at the axis that is on its way. The worker; takes at most one exchange.
void MyManualHomingStep();

/// Post the start (true) or the stop (false) of the axis's origin return. False while the line is
/// lost.
bool MyPostManualHomingX(bool on);
bool MyPostManualHomingY(bool on);
