#include "simulator/console.h"

#include <array>
#include <optional>
#include <sstream>
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

/// The words of one line, taken in turn. A value that is not there or not right is no value.
class Words {
  public:
    explicit Words(std::string_view line) : stream_(std::string(line)) {}

    template <class Value>
    std::optional<Value> Take() {
        Value value{};
        return stream_ >> value ? std::optional(value) : std::nullopt;
    }

    std::optional<AxisName> TakeAxis() {
        const std::string word = Take<std::string>().value_or("");
        const auto at = std::string_view("XYZ").find(word);
        const bool known = word.size() == 1 && at != std::string_view::npos;
        return known ? std::optional(static_cast<AxisName>(at)) : std::nullopt;
    }

    /// A name or a number; 0 if it is neither.
    int TakeSwitch() {
        const std::string word = Take<std::string>().value_or("");
        for (const auto& [name, number] : NamedSwitches) {
            if (name == word) {
                return number;
            }
        }
        return Words(word).Take<int>().value_or(0);
    }

  private:
    std::istringstream stream_;
};

bool Position(StageModel& model, Words& words) {
    const auto x = words.Take<std::int32_t>();
    const auto y = words.Take<std::int32_t>();
    const auto z = words.Take<std::int32_t>();
    if (x && y && z) {
        model.Place({double(*x), double(*y), double(*z)});
    }
    return x && y && z;
}

bool Switch(StageModel& model, Words& words) {
    const int number = words.TakeSwitch();
    const auto value = words.Take<std::int32_t>();
    return value && model.SetSwitch(number, *value);
}

bool Lamp(StageModel& model, Words& words) {
    const auto lamp = words.Take<int>();
    const auto value = words.Take<std::int32_t>();
    return lamp && value && model.SetLamp(*lamp, *value);
}

bool AxisError(StageModel& model, Words& words) {
    const auto axis = words.TakeAxis();
    const auto error = words.Take<std::string>();
    if (axis && error) {
        model.At(*axis).Settings().error = *error == "none" ? "" : *error;
    }
    return axis && error;
}

bool Hand(StageModel& model, Words& words) {
    const auto axis = words.TakeAxis();
    const auto counts = words.Take<std::int32_t>();
    if (axis && counts) {
        model.At(*axis).HandMove(*counts);
    }
    return axis && counts;
}

bool HomeResult(StageModel& model, Words& words) {
    constexpr std::array<std::pair<std::string_view, HomeOutcome>, 3> Outcomes{{
        {"ok", HomeOutcome::Ok},
        {"refuse", HomeOutcome::Refuse},
        {"fail", HomeOutcome::Fail},
    }};
    const auto axis = words.TakeAxis();
    const std::string word = words.Take<std::string>().value_or("");
    for (const auto& [name, outcome] : Outcomes) {
        if (axis && name == word) {
            model.At(*axis).Settings().homeOutcome = outcome;
            return true;
        }
    }
    return false;
}

bool Cancel(StageModel& model, Words& /*words*/) {
    model.Cancel();
    return true;
}

std::string Status(const StageModel& model) {
    std::ostringstream text;
    for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
        const Axis& axis = model.At(name);
        const AxisCondition condition = axis.Condition();
        text << "XYZ"[static_cast<int>(name)] << " " << axis.Counts()
             << (axis.Moving() ? " moving" : " still") << ", result " << condition.result
             << ", limits " << condition.hardLimit << " " << condition.softLimit << ", home "
             << static_cast<int>(axis.Home());
        text << (axis.Settings().error.empty() ? "" : ", error " + axis.Settings().error) << "\n";
    }
    text << "switches";
    for (int number = 1; number <= SwitchCount; ++number) {
        text << " " << model.Switch(number);
    }
    text << "\nlamps";
    for (int lamp = 0; lamp < LampCount; ++lamp) {
        text << " " << model.Lamp(lamp);
    }
    text << "\nremote " << model.Remote() << ", cancelled " << model.Cancelled();
    return text.str();
}

using Action = bool (*)(StageModel& model, Words& words);

constexpr std::array<std::pair<std::string_view, Action>, 7> Actions{{
    {"position", Position},
    {"switch", Switch},
    {"lamp", Lamp},
    {"axis-error", AxisError},
    {"hand", Hand},
    {"home-result", HomeResult},
    {"cancel", Cancel},
}};

}  // namespace

std::string_view ConsoleHelp() {
    return "position X Y Z          put the axes there at once, in counts\n"
           "switch NAME|N VALUE     EMER_SW, SW_Y, DATA_SW, FOOT_SW, MEAS_MODE or 1 to 16\n"
           "lamp N VALUE            lamp 0 to 10, value 0 to 10000\n"
           "axis-error AXIS CODE    the axis reports E1, F2 and the like; none: its position\n"
           "hand AXIS COUNTS        the operator moves the axis by hand\n"
           "home-result AXIS WORD   origin returns from now on: ok, refuse or fail\n"
           "cancel                  the operator stops all motion\n"
           "status                  everything at a glance\n"
           "quit                    end the simulator";
}

std::string RunConsoleLine(StageModel& model, std::string_view line) {
    Words words(line);
    const std::string command = words.Take<std::string>().value_or("help");
    if (command == "help") {
        return std::string(ConsoleHelp());
    }
    if (command == "status") {
        return Status(model);
    }
    for (const auto& [name, action] : Actions) {
        if (name == command) {
            return action(model, words) ? "ok" : "wrong values, see help: " + std::string(line);
        }
    }
    return "unknown command, see help: " + std::string(line);
}

}  // namespace simulator
