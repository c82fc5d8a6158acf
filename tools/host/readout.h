#pragma once

#include <string>

#include "host/module_library.h"

namespace host_tool {

/// What the module tells when it is asked once for everything.
struct Readout {
    ZbOviskStage stage{};
    ZbOviskHealth health{};
    /// The latches, which the readout has cleared.
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
};

Readout ReadAll(ModuleLibrary& module);

/// The readout as one JSON object without a line end: `stage` and `health` with the members of
/// their records, and `latched`. Enumerations are words, ages that never began are null.
std::string JsonOf(const Readout& readout);

}  // namespace host_tool
