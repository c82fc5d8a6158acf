#pragma once

#include <atomic>
#include <cstdint>

#include "platform/win32.h"

/// Set by the shutdown, never cleared: the worker ends at the top of its next pass.
extern std::atomic<std::uint8_t> StopRequested;
/// Set by the worker when it has done its last exchange, never cleared.
extern std::atomic<std::uint8_t> WorkerFinished;

/// The worker's thread procedure: pass after pass until `StopRequested` is set or an exception
/// leaves a step. A pass waits for a posted command for `CmdPoll` milliseconds; when none comes it
/// polls the controller. Either way it then sends all posted commands. Takes no argument. Whoever
/// starts it holds the library for it; the thread gives that hold back as it ends and does not
/// return.
DWORD WINAPI MyWorkerThread(LPVOID);
