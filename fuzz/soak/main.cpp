#include <CLI/CLI.hpp>
#include <cstdio>

#include "soak/conductor.h"
#include "soak/ledger.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    double minutes = 2;
    unsigned lifeSeconds = 5;
    std::uint64_t seed = 1;
};

std::chrono::seconds Since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
}

void Print(const soak::Tally& tally, std::chrono::seconds time, bool steady) {
    const auto number = [](const std::atomic<std::uint64_t>& count) {
        return static_cast<unsigned long long>(count);
    };
    std::printf("%llu readings, %llu latches told, %llu lamp values, %llu viewers\n",
                number(tally.readings), number(tally.latches), number(tally.lamps),
                number(tally.viewers));
    std::printf(
        "soak: %lld s, %llu lives, %llu faults, %llu moves, %llu awaited and told, "
        "%llu homings, %llu broken off: %s\n",
        static_cast<long long>(time.count()), number(tally.lives), number(tally.faults),
        number(tally.moves), number(tally.movesTold), number(tally.homings),
        number(tally.homingsBrokenOff), steady ? "steady" : "GROWS, or was too short");
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    CLI::App app(
        "Lets the module live again and again under a mixed load, and looks for anything that "
        "grows, goes stale or gets lost.");
    app.add_option("--minutes", options.minutes, "how long, at least")->capture_default_str();
    app.add_option("--life", options.lifeSeconds, "seconds of a life, at least")
        ->capture_default_str();
    app.add_option("--seed", options.seed, "what chance starts from")->capture_default_str();
    CLI11_PARSE(app, argc, argv);

    const auto start = Clock::now();
    const std::chrono::duration<double, std::ratio<60>> length(options.minutes);
    simulation::Chance chance(options.seed);
    soak::Tally tally;
    soak::Ledger ledger;
    test_support::SimulatedController controller({.bitsPerSecond = 0, .longestLog = 20});
    // The first life fills what is kept for good, and does not count.
    soak::LiveOnce(controller, std::chrono::seconds(1), chance, tally, [] {});
    while (Clock::now() - start < length) {
        soak::LiveOnce(controller, std::chrono::seconds(options.lifeSeconds), chance, tally,
                       [&] { ledger.Enter(Since(start)); });
    }
    ledger.Print();
    Print(tally, Since(start), ledger.IsSteady());
    return ledger.IsSteady() ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "soak: %s\n", failure.what());
    return EXIT_FAILURE;
}
