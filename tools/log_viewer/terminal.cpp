#include "log_viewer/terminal.h"

#include <cinttypes>
#include <cstdio>

#include "host/interrupt.h"

namespace log_viewer {

namespace {

constexpr std::chrono::milliseconds Period{50};

bool PrintNew(const Session& session, LineStore::Place& place) {
    const LineStore::Reading reading =
        session.store.ReadOn(place, {.stamps = session.options.stamps, .lineEnd = "\n"});
    if (session.options.quiet) {
        return true;
    }
    if (reading.skipped != 0) {
        std::fprintf(stderr, "ovisk-log: output too slow, %" PRIu64 " lines not shown\n",
                     reading.skipped);
    }
    return std::fwrite(reading.text.data(), 1, reading.text.size(), stdout) ==
               reading.text.size() &&
           std::fflush(stdout) == 0;
}

}  // namespace

bool RunTerminal(const Session& session) {
    LineStore::Place place;
    bool good = true;
    bool toldOfFile = false;
    while (good && !session.IsOver()) {
        good = PrintNew(session, place);
        if (!toldOfFile && session.saver != nullptr && session.saver->Failed()) {
            toldOfFile = true;
            std::fprintf(stderr, "ovisk-log: from here on nothing is saved\n");
        }
        host_tool::Pause(Period);
    }
    session.collector.Stop();
    return good && PrintNew(session, place);
}

}  // namespace log_viewer
