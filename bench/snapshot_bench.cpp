#include "snapshot_bench.h"

#include "controller/controller_line.h"
#include "host/zb_ovisk.h"
#include "host/zb_ovisk_plain.h"
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

// The floor of the plain records is the snapshot itself.
BENCHMARK(Snapshot)->Name("plain_stage/floor")->Apply(MeasureAlone);
BENCHMARK(Snapshot)->Name("plain_health/floor")->Apply(MeasureAlone);

template <typename Record, bool (&Read)(Record*)>
void PlainRecord(benchmark::State& state) {
    Record record{};
    record.size = sizeof record;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(Read(&record));
        benchmark::DoNotOptimize(record);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(PlainRecord<ZbOviskStage, ZbOvisk_ReadStage>)
    ->Name("plain_stage/module")
    ->Apply(MeasureAlone);
BENCHMARK(PlainRecord<ZbOviskHealth, ZbOvisk_ReadHealth>)
    ->Name("plain_health/module")
    ->Apply(MeasureAlone);

void TakeAndClear(benchmark::State& state) {
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lampChanged));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(TakeAndClear)->Name("latches/module")->Apply(MeasureAlone);

}  // namespace
