#pragma once

#include "homing/homing_procedure.h"

/// Automatic homing: the controller drives the stage to its origin, X and then Y. A dialog asks the
/// operator once to make room; it closes as soon as the start is posted, and the worker carries the
/// procedure on. Nobody is told its end; a failure stands in the log.
struct AutoHomingState {
    enum : std::uint32_t {
        Confirmation = 1,  ///< the dialog is open
        XReturn = 2,       ///< X origin return under way
        YReturn = 3,       ///< Y origin return under way
    };

    HomingState state;
    const WCHAR* caption = WIDE("Warning");
    const WCHAR* text = WIDE(
        "\r\nMove the Z-axis column to a safe position and press OK to start stage homing."
        "\r\n\r\nPress Cancel to abort.");
};

/// Opens the dialog on the caller's thread and returns when it has ended, with homing under way
/// after OK. Does nothing while it is open already.
void RunAutoHoming(HWND parent);

INT_PTR CALLBACK MyAutoHomingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/// True while the worker has to call the step.
bool AutoHomingRuns();

/// The axis that is on its way: 1 X, 2 Y, 0 none.
int AutoHomingAxis();

/// The line is lost: the run that is under way has failed, and its dialog closes. The worker.
void BreakOffAutoHoming();

/// The worker is over: an axis that was on its way has failed, as far as anybody will know. The
/// worker.
void LoseAutoHoming();

/// One look at the axis that is on its way. The worker; takes at most one exchange. A failed
/// exchange, a failed axis, or a reply without the axis's field ends the procedure with a log line;
/// no command stops the motion.
void MyAutoHomingStep();

/// Asks whether Y has finished. `failed` is set when it has failed, or nothing could be learnt.
bool MyIsCncOriginRestorationCompletedY(bool& failed);
