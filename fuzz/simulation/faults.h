#pragma once

#include <string>
#include <vector>

#include "simulation/chance.h"
#include "simulation/plan.h"
#include "simulation/report.h"

namespace simulation {

/// Bytes that go out together, so long behind the ones before them.
struct Piece {
    Time delay{0};
    std::string bytes;
};

/// Spoils requests and replies by chance.
class Faults {
  public:
    Faults(std::uint64_t seed, std::int64_t percent, Report& report)
        : chance_(seed), percent_(percent), report_(report) {}

    void Stop() { percent_ = 0; }
    bool On() const { return percent_ != 0; }

    /// The request as the controller hears it; empty if it does not.
    std::string Hear(const std::string& request);
    /// The reply as it goes out.
    std::vector<Piece> Spoil(const std::string& reply);
    /// Whether the last reply went out with other bytes than it should.
    bool SpoiltBytes() const { return spoiltBytes_; }

  private:
    std::vector<Piece> SpoilTimes(Fault fault, const std::string& reply);
    std::string SpoilBytes(Fault fault, std::string reply);
    std::string Refuse(const std::string& reply);
    std::size_t PlaceIn(const std::string& text) {
        return static_cast<std::size_t>(chance_.Between(0, std::ssize(text) - 1));
    }
    std::size_t Several(std::int64_t least, std::int64_t most) {
        return static_cast<std::size_t>(chance_.Between(least, most));
    }
    void Count(Fault fault) { ++report_.faults[static_cast<std::size_t>(fault)]; }

    Chance chance_;
    std::int64_t percent_;
    Report& report_;
    bool spoiltBytes_ = false;
};

}  // namespace simulation
