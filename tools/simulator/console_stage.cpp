#include <array>
#include <utility>

#include "simulator/console_commands.h"

namespace simulator {

namespace {

bool Position(Device& device, Words& words) {
    const auto x = words.Take<std::int32_t>();
    const auto y = words.Take<std::int32_t>();
    const auto z = words.Take<std::int32_t>();
    const bool good = x && y && z && words.AtEnd();
    if (good) {
        device.Model().Place({double(*x), double(*y), double(*z)});
    }
    return good;
}

bool PlaceAxis(Device& device, Words& words) {
    const auto axis = words.TakeAxis();
    const auto counts = words.Take<std::int32_t>();
    const bool good = axis && counts && words.AtEnd();
    if (good) {
        device.Model().At(*axis).Place(*counts);
    }
    return good;
}

bool Hand(Device& device, Words& words) {
    const auto axis = words.TakeAxis();
    const auto counts = words.Take<std::int32_t>();
    const bool good = axis && counts && words.AtEnd();
    if (good) {
        device.Model().At(*axis).HandMove(*counts);
    }
    return good;
}

bool Switch(Device& device, Words& words) {
    const int number = words.TakeSwitch();
    const auto value = words.Take<std::int32_t>();
    return value && words.AtEnd() && device.Model().SetSwitch(number, *value);
}

bool Press(Device& device, Words& words) {
    const int number = words.TakeSwitch();
    return words.AtEnd() && device.Model().SetSwitch(number, 1);
}

bool Release(Device& device, Words& words) {
    const int number = words.TakeSwitch();
    return words.AtEnd() && device.Model().SetSwitch(number, 0);
}

bool Lamp(Device& device, Words& words) {
    const auto lamp = words.Take<int>();
    const auto value = words.Take<std::int32_t>();
    return lamp && value && words.AtEnd() && device.Model().SetLamp(*lamp, *value);
}

bool AxisError(Device& device, Words& words) {
    const auto axis = words.TakeAxis();
    const auto error = words.Take<std::string>();
    const bool good = axis && error && words.AtEnd();
    if (good) {
        device.Model().At(*axis).Settings().error = *error == "none" ? "" : *error;
    }
    return good;
}

bool HomeResult(Device& device, Words& words) {
    constexpr std::array<std::pair<std::string_view, HomeOutcome>, 3> Outcomes{{
        {"ok", HomeOutcome::Ok},
        {"refuse", HomeOutcome::Refuse},
        {"fail", HomeOutcome::Fail},
    }};
    const auto axis = words.TakeAxis();
    const std::string word = words.Take<std::string>().value_or("");
    for (const auto& [name, outcome] : Outcomes) {
        if (axis && name == word && words.AtEnd()) {
            device.Model().At(*axis).Settings().homeOutcome = outcome;
            return true;
        }
    }
    return false;
}

bool Origin(Device& device, Words& words) {
    const auto axis = words.TakeAxis();
    const auto counts = words.Take<std::int32_t>();
    const bool good = axis && counts && words.AtEnd();
    if (good) {
        device.Model().At(*axis).PlaceOrigin(*counts);
    }
    return good;
}

bool Cancel(Device& device, Words& words) {
    if (words.AtEnd()) {
        device.Model().Cancel();
    }
    return words.AtEnd();
}

constexpr std::array Commands{
    ConsoleCommand{"position", "X Y Z", "put the axes there at once, in counts", Position},
    ConsoleCommand{"axis", "AXIS COUNTS", "put one axis, X, Y or Z, there at once", PlaceAxis},
    ConsoleCommand{"hand", "AXIS COUNTS", "the operator's hand moves the axis by so much", Hand},
    ConsoleCommand{"press", "SWITCH", "EMER_SW, SW_Y, DATA_SW, FOOT_SW, MEAS_MODE or 1 to 16",
                   Press},
    ConsoleCommand{"release", "SWITCH", "the switch is 0 again", Release},
    ConsoleCommand{"switch", "SWITCH VALUE", "the switch has this value", Switch},
    ConsoleCommand{"lamp", "N VALUE", "lamp 0 to 10, value 0 to 10000", Lamp},
    ConsoleCommand{"axis-error", "AXIS CODE", "the axis reports E1, F2 or the like; none: not",
                   AxisError},
    ConsoleCommand{"origin", "AXIS COUNTS", "where an origin return will find the origin", Origin},
    ConsoleCommand{"home-result", "AXIS WORD", "origin returns from now on: ok, refuse or fail",
                   HomeResult},
    ConsoleCommand{"cancel", "", "the operator stops all motion", Cancel},
};

}  // namespace

std::span<const ConsoleCommand> StageCommands() {
    return Commands;
}

}  // namespace simulator
