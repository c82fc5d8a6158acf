#pragma once

#include <atomic>
#include <cstdint>

#include "link/link_health.h"

/// Set by the shutdown, never cleared: the worker ends at the top of its next pass.
extern std::atomic<std::uint8_t> StopRequested;
/// Set by the worker when it has done its last exchange, never cleared.
extern std::atomic<std::uint8_t> WorkerFinished;

/// How the worker is. The numbers are those of the plain interface.
enum class WorkerState { NotStarted = 0, Runs = 1, Stopped = 2, Ended = 3 };

/// Written by the start and by the worker as it ends: stopped, or ended by an exception.
extern WorkerState workerState ZB_GUARDED_BY(HealthLock);

/// The worker's thread procedure: pass after pass until `StopRequested` is set or an exception
/// leaves a step. A pass waits for a posted command for `CmdPoll` milliseconds; when none comes it
/// polls the controller. Either way it then sends all posted commands. Takes no argument. Whoever
/// starts it holds the library for it; the thread gives that hold back as it ends and does not
/// return.
DWORD WINAPI MyWorkerThread(LPVOID);
