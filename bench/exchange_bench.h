#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "simulator/controller.h"

/// What every side of the exchange rows sends.
inline constexpr const char* ExchangeRequest = "@CPOSMR?\r\n";

/// How fast a controller's replies come: all at once, or as fast as a real line carries them.
struct Pace {
    const char* row;
    unsigned bitsPerSecond;
};
inline constexpr Pace Instant{.row = "exchange_instant", .bitsPerSecond = 0};
inline constexpr Pace Paced{.row = "exchange_paced", .bitsPerSecond = 38'400};

/// Positions whose reply has about the length of most.
inline void PlaceFarOut(simulator::Controller& controller) {
    controller.With([](simulator::StageModel& model) {
        model.Place({1'234'567, -7'654'321, 250'000});
    });
}

/// Puts a controller of that pace on the module's line, and the module's port open; once, so that a
/// process measures one pace.
void EnsureExchangeLine(const Pace& pace);

/// Registers a side of both rows. A `Side` is made with the pace before anything is timed, when the
/// module's line is there; its `Exchange` tells how many seconds one exchange took, 0 if no reply
/// came. One exchange each time,
/// so that the median is one over exchanges.
template <typename Side>
bool RegisterExchange(const char* name) {
    for (const Pace* const pace : {&Instant, &Paced}) {
        const auto measure = [pace](benchmark::State& state) {
            EnsureExchangeLine(*pace);
            static Side side(*pace);
            for ([[maybe_unused]] auto _ : state) {
                const double seconds = side.Exchange();
                if (seconds == 0) {
                    state.SkipWithError("no reply");
                }
                state.SetIterationTime(seconds);
            }
        };
        benchmark::RegisterBenchmark((std::string(pace->row) + "/" + name).c_str(), measure)
            ->Iterations(1)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}

/// The seconds that `work` takes, 0 if it fails.
template <typename Work>
double SecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    const bool good = work();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return good ? time.count() : 0;
}
