#pragma once

#include <string>

namespace simulator {

/// What the program is.
std::string HelpBeforeOptions();
/// What the program's help says after its options. `line` is an example of the option that names
/// the line.
std::string HelpAfterOptions(const std::string& line);

}  // namespace simulator
