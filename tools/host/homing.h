#pragma once

#include "host/actions.h"

namespace host_tool {

/// Who operates the homing dialog.
enum class Operator {
    Person,   ///< the dialog's user: at its window, or natively at the keyboard
    Program,  ///< this tool: it prints what the dialog shows and presses OK whenever it can
};

/// Sends the Home command on the calling thread and waits until homing is over. Automatic homing
/// runs on when its dialog has closed; the tool then shows the position until the stage stands
/// still.
ExitStatus Home(ModuleLibrary& module, bool automatic, Operator who);

}  // namespace host_tool
