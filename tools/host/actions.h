#pragma once

#include "host/module_library.h"

namespace host_tool {

/// What the tool answers with.
enum ExitStatus {
    Done = 0,
    NotLive = 1,     ///< monitor: the stage was not live at the end
    NotSeen = 1,     ///< light: the lamp's value did not come back
    NoModule = 3,    ///< the library could not be loaded
    Refused = 4,     ///< the module or the controller refused it
    MoveFailed = 5,  ///< the move ended with an error, or elsewhere
    EndUnknown = 6,  ///< nobody knows how the move ended, or whether it has
};

/// Sets a lamp and waits until the controller shows the value. Lamps that the stage data does not
/// hold (0, 3 and those above 7) are only set.
ExitStatus SetLight(ModuleLibrary& module, int lamp, int value);

/// Waits for the first status polls and prints the latches, which clears them.
ExitStatus ShowLatches(ModuleLibrary& module);

}  // namespace host_tool
