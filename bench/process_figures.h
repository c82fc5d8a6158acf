#pragma once

#include <cstdint>
#include <map>

/// The seconds that each thread of the process has had of a processor, by the system's number of
/// it.
using ThreadTimes = std::map<std::uint64_t, double>;
ThreadTimes TimesOfThreads();

/// The memory of the process that is in use and resident.
std::int64_t ResidentBytes();

/// All seconds so far of the threads that are not among the others.
inline double SecondsWithout(const ThreadTimes& others) {
    double seconds = 0;
    for (const auto& [thread, time] : TimesOfThreads()) {
        seconds += others.contains(thread) ? 0 : time;
    }
    return seconds;
}
