#include "snapshot_bench.h"

#include "host/zb_ovisk.h"

namespace {

void Snapshot(benchmark::State& state) {
    OviskData data;
    for ([[maybe_unused]] auto _ : state) {
        ZbOvisk_GetOviskData(data);
        benchmark::DoNotOptimize(data);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Snapshot)->Name("snapshot/module")->Apply(MeasureReaders);

void TakeAndClear(benchmark::State& state) {
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lampChanged));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(TakeAndClear)->Name("latches/module")->Apply(MeasureLatches);

}  // namespace
