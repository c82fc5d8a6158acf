#pragma once

#include <string>

#include "log_viewer/session.h"

namespace CLI {
class App;
}

namespace log_viewer {

/// What this system's program has in its help about how it shows the log.
extern const char* const FormHelp;

/// Adds the options that only this system's program has.
void AddFormOptions(CLI::App& app, Options& options);

/// Shows the log in this system's form until the session is over. False if it could not be shown.
/// Throws std::runtime_error.
bool Show(const Session& session);

/// Tells the user why the program ends: on standard error, and where nobody would see that, in a
/// box.
void Complain(const std::string& text);

}  // namespace log_viewer
