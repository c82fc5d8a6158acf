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

/// ZbComOpenWriteRead as one whole under ComLock, noted there for the health, so that the notes
/// have the order of the line. A reply has to have the form of `prefix`, unless that is null.
/// `number`, unless it is null, gets the place of this exchange among all: a later one has a
/// greater number. `command` is zero-terminated and carries its own line end. Any thread; waits for
/// the exchange that runs.
Outcome ExchangeJudged(const char* command, const char* prefix, std::string& reply,
                       std::uint64_t* number) ZB_EXCLUDES(ComLock);

/// The same for a reply of any form. Whether one came.
bool ExchangeLocked(const char* command, std::string& reply) ZB_EXCLUDES(ComLock);

/// Puts the controller into remote mode and drops the reply. Always 1.
int MyRemoteEnable() ZB_EXCLUDES(ComLock);
