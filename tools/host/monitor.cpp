#include "host/monitor.h"

#include <cstdio>
#include <string>

#include "host/interrupt.h"
#include "host/line_watch.h"
#include "host/readout.h"
#include "host/text.h"

namespace host_tool {

namespace {

using Clock = std::chrono::steady_clock;

struct Counts {
    int readouts = 0;
    int positions = 0;
    int switchLatches = 0;
    int emergencyLatches = 0;
    int lampLatches = 0;
    std::string lastPosition;

    void Note(const Readout& readout) {
        const std::string position = PositionText(readout.stage);
        positions += readouts > 0 && position != lastPosition ? 1 : 0;
        lastPosition = position;
        switchLatches += readout.anySwitch ? 1 : 0;
        emergencyLatches += readout.emergency ? 1 : 0;
        lampLatches += readout.lampChanged ? 1 : 0;
        ++readouts;
    }
};

std::string LineOf(const Readout& readout) {
    std::string latched;
    latched += readout.anySwitch ? " switch" : "";
    latched += readout.emergency ? " emergency" : "";
    latched += readout.lampChanged ? " lamps" : "";
    return PositionText(readout.stage) + " | " + SwitchText(readout.stage) + " | lamps " +
           LampText(readout.stage) + " | latched" + (latched.empty() ? " -" : latched);
}

void PrintAt(Clock::duration time, const std::string& line) {
    std::printf("%7.2f s  %s\n", std::chrono::duration<double>(time).count(), line.c_str());
    std::fflush(stdout);
}

void PrintSummary(std::FILE* out, const Counts& counts, const LineWatch& line) {
    std::fprintf(
        out,
        "\nread %d times: %d changes of position, %d switch latches (%d of them emergency), %d "
        "lamp changes\n%s\n",
        counts.readouts, counts.positions, counts.switchLatches, counts.emergencyLatches,
        counts.lampLatches, line.Verdict().c_str());
}

/// Until its time is over, somebody interrupts it, or nobody reads any more what it prints.
bool GoesOn(const MonitorOptions& options, Clock::duration passed) {
    return !Interrupted() && std::ferror(stdout) == 0 &&
           (options.length.count() == 0 || passed < options.length);
}

}  // namespace

bool Monitor(ModuleLibrary& module, const MonitorOptions& options) {
    const auto start = Clock::now();
    Counts counts;
    LineWatch watch(start);
    std::string lastLine;
    while (GoesOn(options, Clock::now() - start)) {
        const Readout readout = ReadAll(module);
        counts.Note(readout);
        const std::string news = watch.Note(readout.health, Clock::now());
        const std::string line = options.json ? JsonOf(readout) : LineOf(readout);
        if (options.json) {
            std::printf("%s\n", line.c_str());
            std::fflush(stdout);
        } else if (options.everyLine || line != lastLine) {
            PrintAt(Clock::now() - start, line);
        }
        if (!options.json && !news.empty()) {
            PrintAt(Clock::now() - start, news);
        }
        lastLine = line;
        Pause(options.period);
    }
    watch.Note(module.Health(), Clock::now());
    PrintSummary(options.json ? stderr : stdout, counts, watch);
    return watch.IsLive();
}

}  // namespace host_tool
