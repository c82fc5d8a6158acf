#include "exchange_bench.h"

#include <chrono>
#include <string>

#include "controller/controller_line.h"
#include "link/exchange.h"

void EnsureExchangeLine() {
    static test_support::SimulatedController controller;
    std::string reply;
    [[maybe_unused]] static const bool opened = ExchangeLocked(ExchangeRequest, reply);
}

namespace {

void Module(benchmark::State& state) {
    EnsureExchangeLine();
    std::string reply;
    for ([[maybe_unused]] auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        if (!ExchangeLocked(ExchangeRequest, reply)) {
            state.SkipWithError("no reply");
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
    }
}
BENCHMARK(Module)->Name("exchange/module")->Apply(MeasureOneByOne);

}  // namespace
