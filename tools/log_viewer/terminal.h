#pragma once

#include "log_viewer/session.h"

namespace log_viewer {

/// Prints the log on standard output until the session is over, to its last character. False if
/// standard output did not take it.
bool RunTerminal(const Session& session);

}  // namespace log_viewer
