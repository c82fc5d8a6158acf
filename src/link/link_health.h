#pragma once

#include <array>
#include <cstdint>

#include "platform/lock_hold.h"

/// Guards what the rooms know of their own health, in all of them, so that one reading is one
/// moment. Held for a few stores; nothing is locked inside it.
extern CRITICAL_SECTION HealthLock;

/// How an exchange went.
enum class Outcome {
    Good,
    ShutOut,  ///< the line's gate was closed to its thread: it counts as none
    BadPort,
    NotOpened,
    NotWritten,
    NotRead,
    NoReply,
    WrongReply,
    LateReply,  ///< a reply came, but bytes had been waiting before the request was written
};

/// How the line is doing, since load.
struct LinkHealth {
    std::uint64_t good = 0;
    std::uint64_t failed = 0;
    std::uint32_t failuresInRow = 0;
    std::uint32_t lastSystemError = 0;   ///< of the last failed call on the port
    std::uint32_t losses = 0;            ///< how often the line was lost
    ULONGLONG lastGoodTick = 0;          ///< means something once `good` is not 0
    std::array<char, 96> lastFailure{};  ///< the request and what happened
};
extern LinkHealth linkHealth ZB_GUARDED_BY(HealthLock);

/// Notes how an exchange of this request went. With `Reopen` the line is lost, with a log line,
/// after a write or read that failed, and after three exchanges in a row without a good reply. Any
/// thread.
void NoteExchange(const char* request, Outcome outcome) ZB_EXCLUDES(HealthLock);

/// How often the line was lost since load. Any thread.
std::uint32_t LineLosses() ZB_EXCLUDES(HealthLock);

/// Notes the code of a call on the port that failed. Any thread.
void NoteSystemError(std::uint32_t code) ZB_EXCLUDES(HealthLock);
