#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>

#include "log/zbr_log.h"

inline constexpr std::size_t NearlyFullLog = LogBlockCharacters - 10;

/// All sides of the log rows.
inline void MeasureLog(benchmark::internal::Benchmark* bench) {
    bench->Arg(0)->Arg(NearlyFullLog)->Threads(1)->Threads(8)->Repetitions(5)->MinTime(0.03);
}

/// Writes pieces into a block that has so many characters each time, and a few pieces more when
/// there are several threads.
template <typename Write>
void WritePieces(benchmark::State& state, WCHAR* block, Write write) {
    const auto used = static_cast<std::size_t>(state.range(0));
    if (state.thread_index() == 0) {
        std::fill_n(block, used, WCHAR{'x'});
        block[used] = 0;
    }
    const std::atomic_ref<WCHAR> end(block[used]);
    for ([[maybe_unused]] auto _ : state) {
        end.store(0, std::memory_order_relaxed);
        benchmark::ClobberMemory();
        write("ZbComRead timeout retry\n");
    }
}

/// Registers the floor of the log rows: a channel that has a block and writes into it.
template <typename Channel>
bool RegisterLogFloor() {
    const auto floor = [](benchmark::State& state) {
        static Channel channel;
        WritePieces(state, channel.Characters(), [](const char* text) { channel.Write(text); });
    };
    for (const char* const name : {"log/floor", "log_viewer/floor"}) {
        benchmark::RegisterBenchmark(name, floor)->Apply(MeasureLog);
    }
    return true;
}
