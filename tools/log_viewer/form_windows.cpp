#include "log_viewer/form.h"

#include <fcntl.h>
#include <io.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "log_viewer/presence.h"
#include "log_viewer/terminal.h"
#include "log_viewer/window.h"

namespace log_viewer {

namespace {

/// Whether the system made the console for this program alone, which was not started from one.
bool OwnsConsole() {
    DWORD processes[2];
    return GetConsoleProcessList(processes, 2) == 1;
}

}  // namespace

const char* const FormHelp =
    R"(The log is shown in a window:
  Pause        Ctrl+P  holds the view still; nothing is lost, it catches up afterwards
  Clear        Ctrl+L  forgets the lines kept; --save's FILE keeps its own
  Save as...   Ctrl+S  writes the lines kept to a file
  Time stamps          shows or hides the time of arrival, also for Save as
  Find         Ctrl+F  without regard to case; F3 or Enter: next, Shift+F3: previous
The view follows the newest line while its end is in sight and nothing is selected; else it holds
still, and Esc goes on. With --no-window or --once the log is printed on standard output, and Ctrl-C
ends the program.)";

void AddFormOptions(CLI::App& app, Options& options) {
    app.add_flag("--no-window", options.noWindow,
                 "Print the log on standard output instead of showing it in a window");
}

bool Show(const Session& session) {
    if (!session.options.noWindow && !session.options.once) {
        if (OwnsConsole()) {
            FreeConsole();
        }
        return RunWindow(session);
    }
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    const Presence presence;
    return RunTerminal(session);
}

void Complain(const std::string& text) {
    std::fprintf(stderr, "ovisk-log: %s\n", text.c_str());
    if (OwnsConsole()) {
        MessageBoxA(nullptr, text.c_str(), "ovisk-log", MB_OK | MB_ICONERROR);
    }
}

}  // namespace log_viewer
