#include "log_viewer/form.h"

#include <cstdio>

#include "log_viewer/presence.h"
#include "log_viewer/terminal.h"

namespace log_viewer {

const char* const FormHelp = "The log is printed on standard output; Ctrl-C ends the program.";

void AddFormOptions(CLI::App& /*app*/, Options& /*options*/) {}

bool Show(const Session& session) {
    const Presence presence;
    return RunTerminal(session);
}

void Complain(const std::string& text) {
    std::fprintf(stderr, "ovisk-log: %s\n", text.c_str());
}

}  // namespace log_viewer
