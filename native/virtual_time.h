#pragma once

#include <chrono>
#include <cstdint>

/// A clock that jumps: as soon as every thread waits, it is the time at which the first of them
/// goes on. For simulations and tests, never for the product.
///
/// Only one thread runs at a time. It runs until it waits, and then the thread goes on that is due
/// first; of several due at one time the one that came to wait first. Nothing else decides, so one
/// seed gives one course of events, on any machine. Waiting for a lock is a wait like any other.
///
/// The threads are the one that calls Start and those that CreateThread makes. They meet through
/// the functions of win32.h alone: a thread that waits elsewhere stops them all, and a thread from
/// elsewhere that waits here ends the process, as does a wait of all threads without an end.
namespace virtual_time {

struct Settings {
    /// GetTickCount64 at the start; below 2^42.
    std::uint64_t firstTick = 1'000'000;
    /// Decides about the pauses.
    std::uint64_t seed = 0;
    /// One call in so many, of those that take or leave a critical section or a mutex or read the
    /// tick count, pauses its thread, as a busy machine does; 0: none.
    std::uint32_t pauseEvery = 0;
    /// The longest of these pauses. A pause of 0 lets all others go on that are due.
    std::chrono::nanoseconds longestPause = std::chrono::milliseconds(1);
};

/// Sets the clock up for the rest of the process, while there is one thread.
void Start(const Settings& settings = {});

/// The time since the start.
std::chrono::nanoseconds Elapsed();

/// A digest of all that was decided so far: which thread went on, and when.
std::uint64_t Fingerprint();

}  // namespace virtual_time
