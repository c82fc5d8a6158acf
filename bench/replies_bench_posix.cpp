#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "replies/query.h"

namespace {

/// A position reply as ExchangeChecked leaves it. The tokenizer cuts it, so each turn has a fresh
/// copy.
constexpr ExchangeReplyBuffer Reply = [] {
    ExchangeReplyBuffer buffer{};
    std::size_t used = 0;
    for (const char* text = ">CPOSMR=+1234567,-7654321,+250000\r\n"; *text != 0; ++text) {
        buffer[used++] = *text;
    }
    return buffer;
}();

void Measure(benchmark::internal::Benchmark* bench) {
    bench->Repetitions(5)->MinTime(0.04);
}

void Floor(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        ExchangeReplyBuffer buffer = Reply;
        benchmark::DoNotOptimize(buffer.data());
        char* rest = nullptr;
        strtok_r(buffer.data(), "=", &rest);
        const char* const x = strtok_r(nullptr, ",", &rest);
        const char* const y = strtok_r(nullptr, ",", &rest);
        const char* const z = strtok_r(nullptr, "\r", &rest);
        benchmark::DoNotOptimize(std::atol(x));  // NOLINT(cert-err34-c)
        benchmark::DoNotOptimize(std::atol(y));  // NOLINT(cert-err34-c)
        benchmark::DoNotOptimize(std::atol(z));  // NOLINT(cert-err34-c)
    }
}
BENCHMARK(Floor)->Name("parse/floor")->Apply(Measure);

void Module(benchmark::State& state) {
    constexpr std::array<char, 4> Delimiters = ListDelimiters<4>('\r');
    for ([[maybe_unused]] auto _ : state) {
        ExchangeReplyBuffer buffer = Reply;
        benchmark::DoNotOptimize(buffer.data());
        std::array<char*, 4> tokens{};
        if (!CutTokens(buffer.data(), Delimiters, tokens)) {
            state.SkipWithError("no tokens");
        }
        benchmark::DoNotOptimize(FieldNumber(tokens[1]));
        benchmark::DoNotOptimize(FieldNumber(tokens[2]));
        benchmark::DoNotOptimize(FieldNumber(tokens[3]));
    }
}
BENCHMARK(Module)->Name("parse/module")->Apply(Measure);

}  // namespace
