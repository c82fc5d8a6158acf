#pragma once

#include <chrono>

#include "host/actions.h"

namespace host_tool {

/// In units of 1000000 controller counts.
struct MoveTarget {
    double x = 0;
    double y = 0;
    double z = 0;
    std::chrono::seconds limit{60};  ///< how long the move may take
};

/// Starts a move, shows the position on the way, and says what became of it. `Done` only when the
/// move ended well and a position that was read after its end is the target's.
ExitStatus GoTo(ModuleLibrary& module, const MoveTarget& target);

}  // namespace host_tool
