#pragma once

#include <string>
#include <string_view>

#include "simulator/device.h"

namespace simulator {

/// The commands of the console and of the control port, one a line, for people.
std::string ConsoleHelp();

/// Carries out one command line, other than "quit", on the device. The result is for people: "ok",
/// several lines of what was asked for, or "error: " and what is wrong; then nothing has changed.
/// Never ends in a line end.
std::string RunConsoleLine(Device& device, std::string_view line);

/// The same with an answer for programs, always one line: "ok", "ok " and what was asked for, its
/// lines joined by "; ", or "error: " and what is wrong.
std::string RunControlLine(Device& device, std::string_view line);

}  // namespace simulator
