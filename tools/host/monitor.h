#pragma once

#include <chrono>

#include "host/module_library.h"

namespace host_tool {

struct MonitorOptions {
    std::chrono::milliseconds period{200};  ///< time between two readouts
    std::chrono::seconds length{0};         ///< how long to run; 0: until Ctrl-C
    bool everyLine = false;                 ///< print each readout, not only changes
    bool json = false;                      ///< print each readout as one JSON object
};

/// Shows position, switches, lamps, latches and the state of the line as they change, then what was
/// read in all and whether the stage is live. True when it is live at the end: the controller
/// answers and the position is fresh, whether it moves or not. With `json` all but the readouts
/// goes to the standard error.
bool Monitor(ModuleLibrary& module, const MonitorOptions& options);

}  // namespace host_tool
