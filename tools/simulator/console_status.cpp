#include <sstream>

#include "simulator/console_commands.h"

namespace simulator {

namespace {

/// Adds one line: the name and the values for 0 to `count` - 1, separated by commas.
template <class Value>
void Add(std::ostream& text, std::string_view name, int count, Value value) {
    text << name << "=";
    for (int i = 0; i < count; ++i) {
        text << (i > 0 ? "," : "") << value(i);
    }
    text << "\n";
}

void AddAxes(std::ostream& text, const StageModel& model) {
    const auto add = [&](std::string_view name, auto value) {
        Add(text, name, AxisCount, [&](int i) { return value(model.At(AxisName(i))); });
    };
    add("position", [](const Axis& axis) { return axis.Counts(); });
    add("moving", [](const Axis& axis) { return axis.Moving(); });
    add("result", [](const Axis& axis) { return axis.Condition().result; });
    add("hard-limit", [](const Axis& axis) { return axis.Condition().hardLimit; });
    add("soft-limit", [](const Axis& axis) { return axis.Condition().softLimit; });
    add("home", [](const Axis& axis) { return static_cast<int>(axis.Home()); });
    add("origin", [](const Axis& axis) { return axis.Origin(); });
    add("axis-error", [](const Axis& axis) {
        const std::string& error = axis.Settings().error;
        return error.empty() ? "none" : error;
    });
}

/// The faults that are switched on or were, each as name:value.
template <class Value>
void AddFaults(std::ostream& text, std::string_view title, Value value) {
    text << title << "=";
    bool first = true;
    for (std::size_t i = 0; i < FaultCount; ++i) {
        if (const auto shown = value(static_cast<Fault>(i)); shown > 0) {
            text << (first ? "" : ",") << FaultTexts[i].name << ":" << shown;
            first = false;
        }
    }
    text << "\n";
}

}  // namespace

std::string ConsoleStatus(Device& device) {
    const StageModel& model = device.Model();
    const Faults& faults = device.FaultsOfLine();
    std::ostringstream text;
    AddAxes(text, model);
    Add(text, "switches", SwitchCount, [&](int i) { return model.Switch(i + 1); });
    Add(text, "lamps", LampCount, [&](int i) { return model.Lamp(i); });
    text << "remote=" << model.Remote() << "\ncancelled=" << model.Cancelled()
         << "\ntime-factor=" << device.TimeFactor()
         << "\ncable=" << (device.CableIn() ? "in" : "out")
         << "\npower=" << (device.PowerOn() ? "on" : "off") << "\nseed=" << faults.Seed() << "\n";
    AddFaults(text, "faults", [&](Fault fault) { return faults.Probability(fault); });
    AddFaults(text, "faults-so-far", [&](Fault fault) { return faults.Count(fault); });
    std::string lines = text.str();
    lines.pop_back();
    return lines;
}

}  // namespace simulator
