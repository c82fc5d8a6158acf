#pragma once

#include <span>
#include <string>
#include <string_view>

#include "simulator/device.h"
#include "simulator/words.h"

namespace simulator {

/// A command of the console that changes something.
struct ConsoleCommand {
    std::string_view name;
    /// The words that follow the name, and what it does, for people.
    std::string_view values;
    std::string_view meaning;
    /// Takes its values and carries the command out if `words` is at its end then. False: a value
    /// is wrong, and nothing has changed.
    bool (*run)(Device& device, Words& words);
    /// What else has to be said once it has been carried out; empty: nothing.
    std::string_view (*remark)(const Device& device) = nullptr;
};

/// The commands for axes, switches and lamps.
std::span<const ConsoleCommand> StageCommands();
/// The commands for time, cable, faults and the controller as a whole.
std::span<const ConsoleCommand> DeviceCommands();

/// Everything at a glance: lines of "name=values".
std::string ConsoleStatus(Device& device);

}  // namespace simulator
