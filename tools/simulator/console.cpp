#include "simulator/console.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "simulator/console_commands.h"

namespace simulator {

namespace {

constexpr int ColumnOfMeaning = 24;

struct Outcome {
    /// Empty: it went well.
    std::string error;
    /// What was asked for; empty for a command that only does something.
    std::string text;
};

void AddHelp(std::ostream& text, std::string_view usage, std::string_view meaning) {
    text << "  " << std::left << std::setw(ColumnOfMeaning - 2) << usage << meaning << "\n";
}

Outcome Run(Device& device, std::span<const ConsoleCommand> commands, std::string_view name,
            Words& words) {
    const auto found = std::ranges::find(commands, name, &ConsoleCommand::name);
    if (found == commands.end()) {
        return {"unknown command, see help", ""};
    }
    if (!found->run(device, words)) {
        const std::string values(found->values);
        return {"usage: " + std::string(name) + (values.empty() ? "" : " " + values), ""};
    }
    return {"", std::string(found->remark ? found->remark(device) : "")};
}

Outcome Run(Device& device, std::string_view line) {
    Words words(line);
    const std::string name = words.Take<std::string>().value_or("help");
    if (name == "help" || name == "status") {
        return {"", name == "help" ? ConsoleHelp() : ConsoleStatus(device)};
    }
    const bool stage = std::ranges::count(StageCommands(), name, &ConsoleCommand::name) > 0;
    return Run(device, stage ? StageCommands() : DeviceCommands(), name, words);
}

}  // namespace

std::string ConsoleHelp() {
    std::ostringstream text;
    for (const auto& commands : {StageCommands(), DeviceCommands()}) {
        for (const ConsoleCommand& command : commands) {
            AddHelp(text, std::string(command.name) + " " + std::string(command.values),
                    command.meaning);
        }
    }
    AddHelp(text, "status", "everything at a glance");
    AddHelp(text, "help", "this list");
    AddHelp(text, "quit", "end the simulator");
    std::string lines = text.str();
    lines.pop_back();
    return lines;
}

std::string RunConsoleLine(Device& device, std::string_view line) {
    const Outcome outcome = Run(device, line);
    if (!outcome.error.empty()) {
        return "error: " + outcome.error;
    }
    return outcome.text.empty() ? "ok" : outcome.text;
}

std::string RunControlLine(Device& device, std::string_view line) {
    const Outcome outcome = Run(device, line);
    if (!outcome.error.empty()) {
        return "error: " + outcome.error;
    }
    std::string answer = outcome.text.empty() ? "ok" : "ok ";
    for (const char byte : outcome.text) {
        answer += byte == '\n' ? std::string("; ") : std::string(1, byte);
    }
    return answer;
}

}  // namespace simulator
