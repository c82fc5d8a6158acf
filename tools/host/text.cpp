#include "host/text.h"

#include <cstdio>

namespace host_tool {

namespace {

std::string AxisText(std::int32_t value, bool error, const char* errorText) {
    return error ? errorText : std::to_string(value);
}

}  // namespace

std::string PositionText(const ZbOviskStage& stage) {
    return "X " + AxisText(stage.x, stage.xError, stage.xErrorText) + "  Y " +
           AxisText(stage.y, stage.yError, stage.yErrorText) + "  Z " +
           AxisText(stage.z, stage.zError, stage.zErrorText);
}

std::string SwitchText(const ZbOviskStage& stage) {
    return "EMER_SW " + std::to_string(stage.switches[0]) + " SW_Y " +
           std::to_string(stage.switches[2]) + " DATA_SW " + std::to_string(stage.switches[4]) +
           " FOOT_SW " + std::to_string(stage.switches[11]) + " MEAS_MODE " +
           std::to_string(stage.switches[12]);
}

std::string LampText(const ZbOviskStage& stage) {
    std::string text;
    for (const int field : {0, 1, 3, 4, 5, 6}) {
        text += (text.empty() ? "" : " ") + std::to_string(stage.lamps[field]);
    }
    return text;
}

std::string SecondsText(std::uint64_t milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f s", static_cast<double>(milliseconds) / 1000);
    return text;
}

}  // namespace host_tool
