#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <thread>

#include "process_figures.h"
#include "simulator/controller.h"

// The rows of a module's life, for the library and for what is set beside it. A `Life` begins
// to poll as it is made with so many milliseconds between two polls; it has `Position()`, the
// newest x that it knows, 0 at first; `Stop()`; and a static `Controller()`, the one that it polls.

/// The wait for a command before each poll: the default, and none.
inline constexpr unsigned DefaultPoll = 80;

/// Waits as a host would that wants to know it soon; the seconds since `start`.
template <typename Life>
double AwaitPosition(Life& life, std::int32_t position,
                     std::chrono::steady_clock::time_point start) {
    const auto limit = start + std::chrono::seconds(5);
    while (life.Position() != position && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline std::chrono::milliseconds RandomTime(int most) {
    static std::minstd_rand random(std::random_device{}());
    return std::chrono::milliseconds(std::uniform_int_distribution(0, most)(random));
}

template <typename Life>
void PlaceStage(std::int32_t position) {
    Life::Controller().With([&](simulator::StageModel& model) {
        model.Place({double(position), 0, 0});
    });
}

/// From a change at the controller to the first snapshot that shows it.
template <typename Life, unsigned Poll>
void MeasureFreshness(benchmark::State& state) {
    static std::int32_t position = 1'234'567;
    PlaceStage<Life>(position);
    static Life life(Poll);
    AwaitPosition(life, position, std::chrono::steady_clock::now());
    for ([[maybe_unused]] auto _ : state) {
        std::this_thread::sleep_for(RandomTime(120));
        PlaceStage<Life>(++position);
        const auto start = std::chrono::steady_clock::now();
        state.SetIterationTime(AwaitPosition(life, position, start));
    }
}

/// From the call that starts it to the first good position.
template <typename Life>
void MeasureStart(benchmark::State& state) {
    PlaceStage<Life>(100);
    for ([[maybe_unused]] auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        Life life(DefaultPoll);
        state.SetIterationTime(AwaitPosition(life, 100, start) - life.LoadSeconds());
    }
}

/// The call that stops it, at any moment.
template <typename Life>
void MeasureStop(benchmark::State& state) {
    PlaceStage<Life>(100);
    for ([[maybe_unused]] auto _ : state) {
        Life life(DefaultPoll);
        std::this_thread::sleep_for(std::chrono::milliseconds(300) + RandomTime(120));
        const auto start = std::chrono::steady_clock::now();
        life.Stop();
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
    }
}

/// What its threads take of a processor in an hour, with nothing else to do.
template <typename Life>
void MeasureIdle(benchmark::State& state) {
    constexpr std::chrono::seconds Length(4);
    PlaceStage<Life>(100);
    const ThreadTimes others = TimesOfThreads();
    Life life(DefaultPoll);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    for ([[maybe_unused]] auto _ : state) {
        const double before = SecondsWithout(others);
        std::this_thread::sleep_for(Length);
        state.SetIterationTime((SecondsWithout(others) - before) *
                               (std::chrono::hours(1) / Length));
    }
}

/// What it adds to the process, once it polls.
template <typename Life>
void MeasureMemory(benchmark::State& state) {
    PlaceStage<Life>(100);
    const std::int64_t before = ResidentBytes();
    Life life(DefaultPoll);
    std::this_thread::sleep_for(std::chrono::milliseconds(800));
    for ([[maybe_unused]] auto _ : state) {
        state.counters["bytes"] = static_cast<double>(ResidentBytes() - before);
        state.SetIterationTime(1);
    }
}

/// Registers a side of the rows.
template <typename Life>
bool RegisterLife(const std::string& side) {
    const auto add = [&](const char* row, void (*measure)(benchmark::State&), int repetitions) {
        benchmark::RegisterBenchmark((row + ("/" + side)).c_str(), measure)
            ->Iterations(1)
            ->Repetitions(repetitions)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("fresh_default", MeasureFreshness<Life, DefaultPoll>, 30);
    add("fresh_0", MeasureFreshness<Life, 0>, 30);
    add("start", MeasureStart<Life>, 8);
    add("stop", MeasureStop<Life>, 8);
    add("idle", MeasureIdle<Life>, 1);
    add("memory", MeasureMemory<Life>, 1);
    return true;
}
