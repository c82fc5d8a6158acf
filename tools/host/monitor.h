#pragma once

#include <chrono>

#include "host/module_library.h"

namespace host_tool {

struct MonitorOptions {
    std::chrono::milliseconds period{200};  ///< time between two readouts
    std::chrono::seconds length{0};         ///< how long to run; 0: until Ctrl-C
    bool everyLine = false;                 ///< print each readout, not only changes
};

/// Shows position, switches, lamps and latches as they change, then what was read in all. True when
/// the data was alive: at least one position other than the first came.
bool Monitor(ModuleLibrary& module, const MonitorOptions& options);

}  // namespace host_tool
