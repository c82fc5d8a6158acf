#include "host/monitor.h"

#include <cstdio>
#include <string>

#include "host/interrupt.h"
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
};

std::string LatchText(ModuleLibrary& module, Counts& counts) {
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    module.ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lampChanged);
    counts.switchLatches += anySwitch ? 1 : 0;
    counts.emergencyLatches += emergency ? 1 : 0;
    counts.lampLatches += lampChanged ? 1 : 0;
    std::string text;
    text += anySwitch ? " switch" : "";
    text += emergency ? " emergency" : "";
    text += lampChanged ? " lamps" : "";
    return text.empty() ? " -" : text;
}

bool PrintSummary(const Counts& counts) {
    std::printf(
        "\nread %d times: %d changes of position, %d switch latches (%d of them emergency), %d "
        "lamp changes\n",
        counts.readouts, counts.positions, counts.switchLatches, counts.emergencyLatches,
        counts.lampLatches);
    const bool alive = counts.positions > 0;
    std::printf(alive ? "the stage is live\n" : "no live data came\n");
    return alive;
}

}  // namespace

bool Monitor(ModuleLibrary& module, const MonitorOptions& options) {
    Counts counts;
    std::string lastPosition;
    std::string lastLine;
    const auto start = Clock::now();
    while (!Interrupted() &&
           (options.length.count() == 0 || Clock::now() - start < options.length)) {
        OviskData data;
        module.ZbOvisk_GetOviskData(data);
        const std::string position = PositionText(data.cposmr);
        const std::string line = position + " | " + SwitchText(data.sswc) + " | lamps " +
                                 LampText(data.labr) + " | latched" + LatchText(module, counts);
        counts.positions += !lastPosition.empty() && position != lastPosition ? 1 : 0;
        if (options.everyLine || line != lastLine) {
            const std::chrono::duration<double> time = Clock::now() - start;
            std::printf("%7.2f s  %s\n", time.count(), line.c_str());
            std::fflush(stdout);
        }
        ++counts.readouts;
        lastPosition = position;
        lastLine = line;
        Pause(options.period);
    }
    return PrintSummary(counts);
}

}  // namespace host_tool
