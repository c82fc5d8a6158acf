#include <array>

#include "simulator/console_commands.h"
#include "simulator/states.h"

namespace simulator {

namespace {

bool State(Device& device, Words& words) {
    const std::string name = words.Take<std::string>().value_or("");
    return words.AtEnd() && EnterState(device.Model(), name);
}

bool SetFault(Device& device, Words& words) {
    const std::string word = words.Take<std::string>().value_or("");
    if (!words.AtEnd()) {
        return false;
    }
    if (word == "off") {
        device.FaultsOfLine().SwitchAllOff();
        return true;
    }
    const auto fault = ParseFault(word);
    if (fault) {
        device.FaultsOfLine().Set(fault->first, fault->second);
    }
    return fault.has_value();
}

bool Seed(Device& device, Words& words) {
    const auto seed = words.Take<std::uint64_t>();
    const bool good = seed && words.AtEnd();
    if (good) {
        device.FaultsOfLine().SetSeed(*seed);
    }
    return good;
}

bool Refuse(Device& device, Words& words) {
    const auto mnemonic = words.Take<std::string>();
    const auto error = words.Take<std::string>();
    const bool good = mnemonic && error && words.AtEnd();
    if (good) {
        device.Wire().Refuse(*mnemonic, *error == "none" ? "" : *error);
    }
    return good;
}

bool Factor(Device& device, Words& words) {
    const auto factor = words.Take<double>();
    const bool good = factor && *factor > 0 && *factor <= HighestTimeFactor && words.AtEnd();
    if (good) {
        device.SetTimeFactor(*factor);
    }
    return good;
}

bool Cable(Device& device, Words& words) {
    const std::string word = words.Take<std::string>().value_or("");
    const bool good = (word == "out" || word == "in") && words.AtEnd();
    if (good) {
        word == "out" ? device.PullCable() : device.PlugCable();
    }
    return good;
}

/// How long something goes away; nothing if a value is wrong.
std::optional<Time> TakeAway(Words& words) {
    constexpr double Longest = 86'400;
    const auto seconds = words.Take<double>();
    if (!seconds || !(*seconds > 0 && *seconds <= Longest) || !words.AtEnd()) {
        return std::nullopt;
    }
    return std::chrono::duration_cast<Time>(std::chrono::duration<double>(*seconds));
}

bool Unplug(Device& device, Words& words) {
    const auto away = TakeAway(words);
    if (away) {
        device.PullCable(away);
    }
    return away.has_value();
}

std::string_view RemarkOfUnplug(const Device& device) {
    return device.PortGoesWithCable() ? "" : "the port can't be taken away: the line is dead";
}

bool Power(Device& device, Words& words) {
    const auto away = TakeAway(words);
    if (away) {
        device.SwitchOff(*away);
    }
    return away.has_value();
}

bool Reset(Device& device, Words& words) {
    if (words.AtEnd()) {
        device.Reset();
    }
    return words.AtEnd();
}

constexpr std::array Commands{
    ConsoleCommand{"state", "NAME", "put the whole stage into a state, see --help", State},
    ConsoleCommand{"time-factor", "FACTOR", "the stage runs so many times faster, up to 1000",
                   Factor},
    ConsoleCommand{"fault", "NAME=P", "a fault, see --help, has probability P, 0 to 1", SetFault},
    ConsoleCommand{"fault", "off", "no faults any more", SetFault},
    ConsoleCommand{"seed", "N", "start the chances of the faults anew", Seed},
    ConsoleCommand{"refuse", "REQUEST CODE", "refuse e.g. MMVAL with E3; none: no longer", Refuse},
    ConsoleCommand{"cable", "out|in", "pull the cable of the line, plug it in", Cable},
    ConsoleCommand{"unplug", "SECONDS", "pull the cable; it comes back by itself after so long",
                   Unplug, RemarkOfUnplug},
    ConsoleCommand{"power", "SECONDS", "switch the controller off for so long", Power},
    ConsoleCommand{"reset", "", "switch the controller off and on again", Reset},
};

}  // namespace

std::span<const ConsoleCommand> DeviceCommands() {
    return Commands;
}

}  // namespace simulator
