#include "exchange_bench.h"

namespace {

/// The waits that every exchange has: 10 ms of pause and 20 ms of idle line.
constexpr double PrescribedSeconds = 0.030;

void Floor(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(PrescribedSeconds);
    }
}
BENCHMARK(Floor)->Name("exchange/floor")->Apply(MeasureOneByOne);

}  // namespace
