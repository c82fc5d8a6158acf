#include "simulation/plan.h"

#include <array>

#include "simulation/chance.h"

namespace simulation {
namespace {

constexpr std::uint64_t TickWrap = std::uint64_t{1} << 32;

std::uint64_t FirstTick(Chance& chance, Time length) {
    const auto milliseconds = length / Milliseconds(1);
    switch (chance.Between(0, 3)) {
        case 0:
            return static_cast<std::uint64_t>(chance.Between(0, 5000));
        case 1:  // The 32 bits run over within this life.
            return TickWrap - static_cast<std::uint64_t>(chance.Between(1, milliseconds));
        case 2:
            return TickWrap * 900 + static_cast<std::uint64_t>(chance.Between(0, 1'000'000));
        default:
            return static_cast<std::uint64_t>(chance.Between(1'000'000, 1'000'000'000));
    }
}

std::string Settings(Chance& chance, double scaleFactor) {
    constexpr std::array PollTimes{80, 80, 80, 80, 10, 1, 250};
    constexpr std::array Delays{10, 10, 10, 0, 30};
    const int pollTime = chance.Of(PollTimes);
    const int delay = chance.Of(Delays);
    const bool logs = chance.OneIn(5);
    return "[Ovisk]\nCmdPoll=" + std::to_string(pollTime) + "\nDelay=" + std::to_string(delay) +
           "\nScaleFactor=" + std::to_string(scaleFactor) + "\nSerialLog=" + (logs ? "1" : "0") +
           "\n";
}

}  // namespace

Plan MakePlan(std::uint64_t seed, std::uint64_t life, bool allWithKeys) {
    std::seed_seq both{seed, seed >> 32, life};
    std::array<std::uint32_t, 2> words{};
    both.generate(words.begin(), words.end());
    Chance chance(std::uint64_t{words[0]} << 32 | words[1]);
    constexpr std::array Scales{100.0, 100.0, 1.0, 250.5};
    constexpr std::array PauseRates{0U, 0U, 500U, 50U, 5U};
    constexpr std::array PauseTimes{0, 100, 2000, 15'000, 200'000};
    constexpr std::array Speeds{38'400U, 38'400U, 115'200U, 9600U, 0U};
    Plan plan{};
    plan.length = Seconds(chance.OneIn(10) ? chance.Between(1, 60) : chance.Between(300, 5400));
    plan.clock.firstTick = FirstTick(chance, plan.length);
    plan.clock.seed = chance.Seed();
    plan.clock.pauseEvery = chance.Of(PauseRates);
    plan.clock.longestPause = std::chrono::microseconds(chance.Of(PauseTimes));
    plan.chance = chance.Seed();
    plan.percent = chance.OneIn(20) ? 0 : chance.Between(1, 5);
    plan.automatic = chance.OneIn(2);
    plan.portComesLate = chance.OneIn(10);
    plan.endsInTrouble = chance.OneIn(4);
    plan.portIsPulled = plan.endsInTrouble && chance.OneIn(3);
    plan.viewerRuns = chance.OneIn(8);
    plan.bitsPerSecond = chance.Of(Speeds);
    plan.latency = std::chrono::microseconds(chance.Between(0, 8000));
    plan.scaleFactor = chance.Of(Scales);
    plan.settings = Settings(chance, plan.scaleFactor);
    plan.bothKeys = chance.OneIn(2) || allWithKeys;
    plan.settings += plan.bothKeys ? "Reopen=1\nStrictReplies=1\n" : "";
    return plan;
}

}  // namespace simulation
