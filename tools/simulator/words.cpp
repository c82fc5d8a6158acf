#include "simulator/words.h"

#include <array>
#include <utility>

namespace simulator {

namespace {

constexpr std::array<std::pair<std::string_view, int>, 5> NamedSwitches{{
    {"EMER_SW", EmergencySwitch},
    {"SW_Y", YSwitch},
    {"DATA_SW", DataSwitch},
    {"FOOT_SW", FootSwitch},
    {"MEAS_MODE", MeasMode},
}};

}  // namespace

std::optional<AxisName> Words::TakeAxis() {
    const std::string word = Take<std::string>().value_or("");
    const auto at = std::string_view("XYZ").find(word);
    const bool known = word.size() == 1 && at != std::string_view::npos;
    return known ? std::optional(static_cast<AxisName>(at)) : std::nullopt;
}

int Words::TakeSwitch() {
    const std::string word = Take<std::string>().value_or("");
    for (const auto& [name, number] : NamedSwitches) {
        if (name == word) {
            return number;
        }
    }
    Words rest(word);
    const int number = rest.Take<int>().value_or(0);
    return rest.AtEnd() ? number : 0;
}

}  // namespace simulator
