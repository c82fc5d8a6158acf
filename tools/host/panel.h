#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/actions.h"

namespace host_tool {

struct PanelSession {
    std::vector<std::string> steps;  ///< done one after the other, then the panel stays open
    std::chrono::seconds length{0};  ///< ends after so long; 0: when the panel is closed, or Ctrl-C
};

/// Serves the diagnostic panel on the calling thread, which has started the module. A step is a
/// button's caption, which presses it, or ID=TEXT, which types into that box; what has changed in
/// the panel's boxes is printed after each. Without a length, steps end the session too.
/// `Refused` when the settings don't ask for the panel, or a step names nothing.
ExitStatus ServePanel(const PanelSession& session);

}  // namespace host_tool
