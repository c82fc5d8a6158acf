#pragma once

#include "log_viewer/session.h"

namespace log_viewer {

/// Shows the log in a window titled "Zembra Log" until it is closed or the session is over. False
/// if there is no window to be had.
bool RunWindow(const Session& session);

}  // namespace log_viewer
