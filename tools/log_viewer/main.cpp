#include <CLI/CLI.hpp>
#include <cinttypes>
#include <cstdio>
#include <optional>

#include "host/interrupt.h"
#include "log_viewer/form.h"

namespace {

using namespace log_viewer;

constexpr int StatusGood = 0;
constexpr int StatusFailed = 1;
constexpr int StatusBadCommandLine = 2;
constexpr int StatusSecondViewer = 3;

const char* const Description =
    R"(Shows what the ZbOvisk stage module writes to its shared-memory log.

The module keeps at most 4999 characters until a viewer takes them, and drops what finds no room.
This viewer takes them as soon as a line is announced, and ten times a second besides. One viewer
runs at a time. With SerialLog 1 in the module's settings the log holds every exchange with the
stage controller.
)";

const char* const TextHelp =
    R"(Text, on the screen and in files, is UTF-8 with line-feeds. A backslash is written \\, other
control characters \r, \t, \0 or \xNN, and half a character \uNNNN, so that the log's own characters
can be had back. Time stamps have the form [HH:MM:SS.mmm], local time, and a blank behind them.)";

const char* const Statuses = R"(Exit status:
  0  ended by its user, by --seconds, or after --once
  1  the log or a file could not be opened, or not everything could be taken, shown or saved
  2  wrong command line
  3  another viewer runs)";

const char* const Examples = R"(Examples:
  ovisk-log                              look at the log
  ovisk-log --save stage.log --stamps    and keep all of it, with the time of each line
  ovisk-log --once                       what waits in the log now)";

std::string Footer() {
    return std::string(FormHelp) + "\n\n" + TextHelp + "\n\n" + Statuses + "\n\n" + Examples;
}

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--save", options.saveFile, "Append everything that comes to FILE")
        ->type_name("FILE");
    app.add_flag("--stamps", options.stamps,
                 "Put the time of arrival before each line, in FILE and on standard output");
    app.add_option("--lines", options.lines,
                   "Lines kept for the view; the oldest go first. FILE keeps them all")
        ->check(CLI::Range(100, 100'000))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--seconds", options.seconds, "End after so many seconds; 0: when told to")
        ->type_name("N")
        ->capture_default_str();
    app.add_flag("--once", options.once, "Take what the log holds now, print it and end");
    app.add_flag("--quiet", options.quiet, "Print nothing on standard output, for use with --save");
    AddFormOptions(app, options);
    app.footer(Footer());
}

void PrintSummary(const Session& session) {
    std::fprintf(stderr,
                 "ovisk-log: %" PRIu64 " lines, %" PRIu64
                 " characters; at most %zu of %zu characters of the log's block were in use\n",
                 session.store.Received(), session.collector.Characters(),
                 session.collector.Fullest(), Channel::BlockCharacters - 1);
}

/// Says what went wrong, if anything did.
bool WentWell(bool shown, bool tookAll, const FileSaver* saver) {
    const bool saved = saver == nullptr || !saver->Failed();
    if (!shown) {
        Complain("the log could not be shown");
    }
    if (!tookAll) {
        Complain("another program holds the log; text was left in it");
    }
    if (!saved) {
        Complain("cannot write " + saver->File().string());
    }
    return shown && tookAll && saved;
}

int View(const Options& options) {
    const ViewerSeat seat;
    if (!seat) {
        Complain("another viewer runs");
        return StatusSecondViewer;
    }
    std::optional<FileSaver> saver;
    if (!options.saveFile.empty()) {
        saver.emplace(options.saveFile, options.stamps);
    }
    FileSaver* const file = saver ? &*saver : nullptr;
    Channel channel;
    LineStore store(options.lines);
    Collector collector(channel, store, file);
    const Session session{
        .options = options, .store = store, .collector = collector, .saver = file};
    const bool shown = Show(session);
    const bool tookAll = collector.Stop();
    if (!options.once) {
        PrintSummary(session);
    }
    return WentWell(shown, tookAll, file) ? StatusGood : StatusFailed;
}

int Run(int argc, char** argv) {
    CLI::App app{Description};
    Options options;
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? StatusGood : StatusBadCommandLine;
    }
    host_tool::CatchInterrupts();
    return View(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        Complain(error.what());
        return StatusFailed;
    }
}
