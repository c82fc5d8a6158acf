#pragma once

#include <chrono>

namespace host_tool {

/// From now on Ctrl-C and a polite request to end are noted instead of ending the program.
void CatchInterrupts();
/// Whether one has come.
bool Interrupted();
/// Waits, at most until an interrupt is seen.
void Pause(std::chrono::milliseconds time);

}  // namespace host_tool
