#pragma once

#include <array>
#include <optional>
#include <vector>

#include "host/zb_ovisk_plain.h"
#include "simulation/plan.h"
#include "simulation/reference.h"

namespace simulation {

/// What the health may tell of the line and of ages, worked out from the requests that went out and
/// the bytes that were read. Nobody outside sees the moment at which the module notes something, so
/// there may be two answers; a reading that fits none of them breaks the rule. In a life that mends
/// its line, where exchanges fail that never come to the line, a reading is only held to itself.
class HealthRules {
  public:
    explicit HealthRules(const Plan& plan);

    /// The newest exchange has begun: the one before, `over`, is noted by now.
    void ExchangeOver(const Exchange& over, bool isWorkers);
    /// The worker has begun an exchange: what its last one brought is in the record by now.
    void WorkerGoesOn();
    void ReadingBegins(const Exchange& current, bool isWorkers);
    void ReadingEnds(const ZbOviskHealth& health, const Exchange& current, bool isWorkers);

  private:
    /// When something may have happened, in milliseconds since the start.
    struct Span {
        double first;
        double last;
    };
    using Moment = std::optional<Span>;  ///< nothing: never
    /// The parts of the record, in the order of the variant that a poll brings.
    enum Part { Position, Switches, Lamps, Parts };
    struct State {
        std::uint64_t good = 0;
        std::uint64_t failed = 0;
        std::uint32_t row = 0;
        Moment lastGood;
        std::array<Moment, Parts> merged;
        /// What the worker is taking over, perhaps behind the next exchange of another thread.
        std::array<Moment, Parts> merging;
    };

    Moment EndOf(const Exchange& exchange) const;
    State After(const Exchange& exchange, bool isWorkers) const;
    /// The states that may be true now, while `current` may have come to its end or not.
    void AddStates(const Exchange& current, bool isWorkers);
    bool Fits(const State& state, const ZbOviskHealth& health) const;
    bool FitsAges(const State& state, const ZbOviskHealth& health) const;
    bool IsAge(std::uint64_t age, const Moment& moment) const;

    const double slack_;
    const bool mends_;
    State settled_;
    bool isReading_ = false;
    double readingSince_ = 0;
    double readingUntil_ = 0;
    std::vector<State> possible_;
    /// Exchanges that found no port and so never came to the line; nothing: not known yet.
    std::optional<std::uint64_t> unseen_;
};

}  // namespace simulation
