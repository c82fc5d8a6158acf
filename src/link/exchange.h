#pragma once

#include <cstdint>
#include <string>

#include "link/com_lock.h"
#include "link/link_health.h"

/// One write and one read: opens the port if needed, waits out `Delay` after a failure, writes,
/// waits `Delay`, reads. True when a reply with a line-feed came; its form is not looked at. Logs
/// its failures, and with `logEnabled` its texts. `reply` keeps its content when nothing was read.
bool ZbComOpenWriteRead(const std::string& command, std::string& reply, bool logEnabled)
    ZB_REQUIRES(ComLock);

/// ExchangeLocked for those who look at the reply's form themselves: says how the exchange went,
/// and leaves it to the caller to note that. `number`, unless it is null, gets the place of this
/// exchange among all: a later one has a greater number.
Outcome ExchangeUnjudged(const char* command, std::string& reply, std::uint64_t* number)
    ZB_EXCLUDES(ComLock);

/// ZbComOpenWriteRead as one whole under ComLock. `command` is zero-terminated and carries its own
/// line end. Any thread; waits for the exchange that runs.
bool ExchangeLocked(const char* command, std::string& reply) ZB_EXCLUDES(ComLock);

/// Puts the controller into remote mode and drops the reply. Always 1.
int MyRemoteEnable() ZB_EXCLUDES(ComLock);
