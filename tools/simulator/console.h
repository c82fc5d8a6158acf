#pragma once

#include <string>
#include <string_view>

#include "simulator/stage_model.h"

namespace simulator {

/// The commands of the simulator's console, one a line, for people.
std::string_view ConsoleHelp();

/// Carries out one line of the console, other than "quit", on the stage. The result is what to
/// show: the outcome, or what is wrong with the line. Never ends in a line end.
std::string RunConsoleLine(StageModel& model, std::string_view line);

}  // namespace simulator
