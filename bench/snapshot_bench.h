#pragma once

#include <benchmark/benchmark.h>

#include <mutex>

#include "stage/ovisk_data.h"

/// Both sides of the snapshot rows: several host threads that read as fast as they can.
inline void MeasureReaders(benchmark::internal::Benchmark* bench) {
    bench->Threads(1)->Threads(4)->Threads(16)->UseRealTime()->Repetitions(5)->MinTime(0.04);
}

/// Both sides of the latch rows.
inline void MeasureLatches(benchmark::internal::Benchmark* bench) {
    bench->Repetitions(5)->MinTime(0.04);
}

/// The floors of the rows, with the system's own lock that serves the module's threads.
template <typename Lock>
class SnapshotFloors {
  public:
    static bool Register() {
        benchmark::RegisterBenchmark("snapshot/floor", Copy)->Apply(MeasureReaders);
        benchmark::RegisterBenchmark("latches/floor", Clear)->Apply(MeasureLatches);
        return true;
    }

  private:
    static void Copy(benchmark::State& state) {
        OviskData copy;
        OviskData data;
        for ([[maybe_unused]] auto _ : state) {
            {
                const std::lock_guard hold(lock_);
                copy = shared_;
            }
            benchmark::DoNotOptimize(copy);
            data = copy;
            benchmark::DoNotOptimize(data);
            benchmark::ClobberMemory();
        }
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
