#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "simulator/scripted_reply.h"

namespace simulator {

/// What can go wrong on the way from a request to the bytes of its reply.
enum class Fault {
    Silence,
    Dropped,
    Delay,
    Late,
    Split,
    Doubled,
    DroppedByte,
    DoubledByte,
    Garbled,
    Nul,
    MissingCr,
    MissingLf,
    Oversize,
    Refusal,
    AxisError,
    Cable,
    Reset
};

inline constexpr std::size_t FaultCount = 17;

/// A fault in words: its name on command lines, and what it does, for people.
struct FaultText {
    std::string_view name;
    std::string_view effect;
};

/// In the order of `Fault`.
extern const std::array<FaultText, FaultCount> FaultTexts;

/// "NAME=PROBABILITY", with a probability from 0 to 1; nothing if the text is anything else.
std::optional<std::pair<Fault, double>> ParseFault(std::string_view text);

struct FaultTimes {
    /// A delayed reply waits for a time between these two, one that the host still bears.
    Time shortestDelay = std::chrono::milliseconds(50);
    Time longestDelay = std::chrono::milliseconds(1000);
    /// A late reply waits for this time; hosts give up after about 2.7 s.
    Time late = std::chrono::milliseconds(3000);
    /// The pieces of a split reply are up to this time apart, at least a millisecond.
    Time longestGap = std::chrono::milliseconds(50);
    /// How long a cable that a fault has pulled stays out.
    Time cableOut = std::chrono::milliseconds(2000);
    /// How long the controller is deaf after a reset.
    Time boot = std::chrono::milliseconds(1000);
};

/// Decides for each request which faults happen to it, and spoils replies. All chances come from
/// one seed: the same seed, settings and number of requests give the same faults on every machine.
/// Not thread-safe.
class Faults {
  public:
    explicit Faults(const FaultTimes& times = {}) : times_(times) {}

    const FaultTimes& Times() const { return times_; }
    /// `probability` from 0, never, which every fault has at first, to 1, always.
    void Set(Fault fault, double probability);
    double Probability(Fault fault) const;
    void SwitchAllOff() { probabilities_ = {}; }
    /// Starts the chances anew, as they were for the first request with this seed.
    void SetSeed(std::uint64_t seed);
    std::uint64_t Seed() const { return seed_; }
    /// How often the fault has taken effect so far.
    std::uint64_t Count(Fault fault) const;

    /// Draws the chances of the next request: two numbers for every fault, switched on or not, so
    /// that one fault's probability does not change what becomes of the others.
    void Draw();
    /// Whether the fault happens to the present request. True counts as taken effect.
    bool Happens(Fault fault);
    /// The fault's second number: which of the possible ways it takes.
    std::uint64_t Detail(Fault fault) const;

    /// The reply with all the faults that concern its bytes and their times.
    ScriptedReply Spoil(std::string reply);

  private:
    std::vector<ScriptedReply::Piece> Cut(const std::string& reply);

    struct Chance {
        /// From 0 to just under 1.
        double chance = 1;
        std::uint64_t detail = 0;
    };

    FaultTimes times_;
    std::uint64_t seed_ = 1;
    std::mt19937_64 numbers_{seed_};
    std::array<double, FaultCount> probabilities_{};
    std::array<Chance, FaultCount> chances_{};
    std::array<std::uint64_t, FaultCount> counts_{};
};

}  // namespace simulator
