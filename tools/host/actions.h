#pragma once

#include <chrono>

#include "host/module_library.h"

namespace host_tool {

/// What the tool answers with.
enum ExitStatus {
    Done = 0,
    NoLiveData = 1,  ///< monitor: no position other than the first came
    NotSeen = 1,     ///< light: the lamp's value did not come back
    NoModule = 3,    ///< the library could not be loaded
    Refused = 4,     ///< the module refused the call
    MoveFailed = 5,  ///< the move ended with an error
    NoNotice = 6,    ///< the module did not tell the end of the move in time
};

struct MoveTarget {
    double x = 0;
    double y = 0;
    double z = 0;
    std::chrono::seconds limit{60};  ///< the tool's own: the module may never call back
};

/// Starts a move, shows the position on the way, waits for the notice of its end.
ExitStatus GoTo(ModuleLibrary& module, const MoveTarget& target);

/// Sets a lamp and waits until the controller shows the value. Lamps that the stage data does not
/// hold (0, 3 and those above 7) are only set.
ExitStatus SetLight(ModuleLibrary& module, int lamp, int value);

/// Waits for the first status polls and prints the latches, which clears them.
ExitStatus ShowLatches(ModuleLibrary& module);

}  // namespace host_tool
