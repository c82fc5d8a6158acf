#include "host/text.h"

namespace host_tool {

namespace {

std::string AxisText(std::int32_t value, std::uint8_t error, const std::string& errorText) {
    return error != 0 ? errorText : std::to_string(value);
}

}  // namespace

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

}  // namespace host_tool
