#pragma once

#include <benchmark/benchmark.h>

/// What both sides of the exchange rows send.
inline constexpr const char* ExchangeRequest = "@CPOSMR?\r\n";

/// Puts a controller that answers at once on the line, and the module's port open; once.
void EnsureExchangeLine();

/// One exchange each time, so that the median is one over exchanges.
inline void MeasureOneByOne(benchmark::internal::Benchmark* bench) {
    bench->Iterations(1)->Repetitions(20)->UseManualTime()->Unit(benchmark::kMillisecond);
}
