#include "host/monitor.h"

#include <cstdio>
#include <string>

#include "host/interrupt.h"

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

std::string AxisText(std::int32_t value, std::uint8_t error, const std::string& errorText) {
    return error != 0 ? errorText : std::to_string(value);
}

std::string PositionText(const CposmrReply& position) {
    return "X " + AxisText(position.x, position.xError, position.xErrorText) + "  Y " +
           AxisText(position.y, position.yError, position.yErrorText) + "  Z " +
           AxisText(position.z, position.zError, position.zErrorText);
}

std::string SwitchText(const SswcReply& switches) {
    return "EMER_SW " + std::to_string(switches.EMER_SW) + " SW_Y " +
           std::to_string(switches.SW_Y) + " DATA_SW " + std::to_string(switches.DATA_SW) +
           " FOOT_SW " + std::to_string(switches.FOOT_SW) + " MEAS_MODE " +
           std::to_string(switches.MEAS_MODE);
}

std::string LampText(const LabrReply& lamps) {
    std::string text;
    for (const std::int32_t value :
         {lamps.labr1, lamps.labr2, lamps.labr4, lamps.labr5, lamps.labr6, lamps.labr7}) {
        text += (text.empty() ? "" : " ") + std::to_string(value);
    }
    return text;
}

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
