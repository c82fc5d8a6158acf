#include "snapshot_bench.h"

#include "controller/controller_line.h"
#include "host/zb_ovisk.h"
#include "running_worker.h"

void EnsureWorker() {
    static test_support::SimulatedController controller;
    static const RunningWorker worker("[Ovisk]\nCmdPoll=0\n");
}

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
BENCHMARK(Snapshot)->Name("scaled/module")->Apply(MeasureReaders);

void SnapshotBesideWorker(benchmark::State& state) {
    EnsureWorker();
    Snapshot(state);
}
BENCHMARK(SnapshotBesideWorker)->Name("beside/module")->Apply(MeasureReaders);

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
