#pragma once

#include <array>
#include <cstdint>

namespace simulation {

/// What can become of a reply, and of the line.
enum class Fault {
    Lost,
    Misheard,
    Silence,
    Delay,
    Late,
    Split,
    Dropped,
    Doubled,
    Garbled,
    NoCr,
    NoLf,
    NoLineEnd,
    Nul,
    Oversize,
    Refusal,
    AxisError,
    Cable,
    Reset,
    Count
};
inline constexpr std::size_t FaultCount = static_cast<std::size_t>(Fault::Count);

/// What one life came to; plain, since it crosses from the life's process to the campaign's.
struct Report {
    std::array<std::uint64_t, FaultCount> faults;
    std::uint64_t exchanges;
    std::uint64_t goodPolls;
    std::uint64_t joined;  ///< good replies that were made of the bytes of two
    std::uint64_t mixed;   ///< ... and whose values stand in neither
    std::uint64_t
        garbled;           ///< good replies with another number than the controller's: spoilt bytes
    std::uint64_t older;   ///< ... since they answer the same question of before
    std::uint64_t losses;  ///< of the line, noticed by the module
    std::uint64_t returns;
    double longestReturn;  ///< in seconds, once the faults had stopped
    std::uint64_t snapshots;
    std::uint64_t readings;  ///< of the health
    std::uint64_t latches;   ///< reads of the latches that found one
    std::uint64_t lamps;
    std::uint64_t movesAsked;
    std::uint64_t movesAccepted;
    std::uint64_t movesTold;
    std::uint64_t movesExcused;
    std::uint64_t homings;
    std::uint64_t homingsBrokenOff;
    std::uint64_t axesHomed;
    std::uint64_t switches;  ///< of threads
    std::uint64_t digest;    ///< of everything that was noted, and of the order of the threads
    double seconds;          ///< simulated
    bool bothKeys;
    bool over;
    char root[64];  ///< the machine's folder
    char violation[400];
};

}  // namespace simulation
