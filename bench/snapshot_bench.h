#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <mutex>

#include "stage/ovisk_data.h"

/// Both sides of the snapshot rows: several host threads that read as fast as they can.
inline void MeasureReaders(benchmark::internal::Benchmark* bench) {
    bench->Threads(1)->Threads(4)->Threads(16)->UseRealTime()->Repetitions(5)->MinTime(0.04);
}

/// Has the module's worker poll a controller without a pause, from then on.
void EnsureWorker();

/// Both sides of the rows with one reader: the latches and the plain records.
inline void MeasureAlone(benchmark::internal::Benchmark* bench) {
    bench->Repetitions(5)->MinTime(0.04);
}

/// The floors of the rows, with the system's own lock that serves the module's threads.
template <typename Lock>
class SnapshotFloors {
  public:
    static bool Register() {
        benchmark::RegisterBenchmark("snapshot/floor", Copy)->Apply(MeasureReaders);
        benchmark::RegisterBenchmark("scaled/floor", CopyAndScale)->Apply(MeasureReaders);
        benchmark::RegisterBenchmark("beside/floor", CopyBesideWorker)->Apply(MeasureReaders);
        benchmark::RegisterBenchmark("latches/floor", Clear)->Apply(MeasureAlone);
        return true;
    }

  private:
    template <typename After>
    static void CopyAnd(benchmark::State& state, After after) {
        OviskData data;
        for ([[maybe_unused]] auto _ : state) {
            OviskData copy;  // Of each call's own: any thread may read.
            {
                const std::lock_guard hold(lock_);
                copy = shared_;
            }
            benchmark::DoNotOptimize(copy);
            data = copy;
            after(data.cposmr);
            benchmark::DoNotOptimize(data);
            benchmark::ClobberMemory();
        }
    }

    static void Copy(benchmark::State& state) {
        CopyAnd(state, [](CposmrReply&) {});
    }

    /// With what the snapshot has to do besides: divide and round three numbers.
    static void CopyAndScale(benchmark::State& state) {
        double scale = 100.0;
        benchmark::DoNotOptimize(scale);
        CopyAnd(state, [scale](CposmrReply& position) {
            position.x = static_cast<std::int32_t>(std::lround(position.x / scale));
            position.y = static_cast<std::int32_t>(std::lround(position.y / scale));
            position.z = static_cast<std::int32_t>(std::lround(position.z / scale));
        });
    }

    static void CopyBesideWorker(benchmark::State& state) {
        EnsureWorker();
        Copy(state);
    }

    static void Clear(benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            const std::lock_guard hold(lock_);
            SswcReply& switches = shared_.sswc;
            benchmark::DoNotOptimize(switches.EMER_SW | switches.SW_Y | switches.DATA_SW |
                                     switches.FOOT_SW | shared_.labr.lampChanged);
            switches.EMER_SW = switches.SW_Y = switches.DATA_SW = switches.FOOT_SW = 0;
            shared_.labr.lampChanged = 0;
            benchmark::ClobberMemory();
        }
    }

    inline static Lock lock_;
    inline static OviskData shared_;
};
