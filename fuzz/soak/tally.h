#pragma once

#include <atomic>
#include <cstdint>

namespace soak {

/// What has been done so far.
struct Tally {
    std::atomic<std::uint64_t> lives{0};
    std::atomic<std::uint64_t> readings{0};
    std::atomic<std::uint64_t> latches{0};
    std::atomic<std::uint64_t> lamps{0};
    std::atomic<std::uint64_t> viewers{0};
    std::atomic<std::uint64_t> moves{0};
    std::atomic<std::uint64_t> movesTold{0};
    std::atomic<std::uint64_t> homings{0};
    std::atomic<std::uint64_t> homingsBrokenOff{0};
    std::atomic<std::uint64_t> faults{0};
};

}  // namespace soak
