#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "replies/query.h"

namespace {

void Measure(benchmark::internal::Benchmark* bench) {
    bench->Repetitions(5)->MinTime(0.04);
}

/// A reply as ExchangeChecked leaves it.
ExchangeReplyBuffer Buffer(std::string_view reply) {
    ExchangeReplyBuffer buffer{};
    std::ranges::copy(reply, buffer.begin());
    return buffer;
}

/// Registers both sides of one reply with so many tokens, its name among them, that ends at `last`.
/// Each turn cuts a fresh copy.
template <std::size_t Count>
void Register(const std::string& row, const char* reply, char last) {
    const auto floor = [=](benchmark::State& state) {
        const ExchangeReplyBuffer whole = Buffer(reply);
        const char end[2] = {last, 0};
        for ([[maybe_unused]] auto _ : state) {
            ExchangeReplyBuffer buffer = whole;
            benchmark::DoNotOptimize(buffer.data());
            char* rest = nullptr;
            strtok_r(buffer.data(), "=", &rest);
            for (std::size_t i = 1; i < Count; ++i) {
                const char* const field = strtok_r(nullptr, i + 1 < Count ? "," : end, &rest);
                benchmark::DoNotOptimize(std::atol(field));  // NOLINT(cert-err34-c)
            }
        }
    };
    const auto module = [=](benchmark::State& state) {
        const ExchangeReplyBuffer whole = Buffer(reply);
        for ([[maybe_unused]] auto _ : state) {
            ExchangeReplyBuffer buffer = whole;
            benchmark::DoNotOptimize(buffer.data());
            Tokens<Count - 1> tokens{};
            if (!CutTokens<Count - 1>(buffer.data(), last, tokens)) {
                state.SkipWithError("no tokens");
            }
            for (std::size_t i = 1; i < Count; ++i) {
                benchmark::DoNotOptimize(FieldNumber(tokens[i]));
            }
        }
    };
    benchmark::RegisterBenchmark((row + "/floor").c_str(), floor)->Apply(Measure);
    benchmark::RegisterBenchmark((row + "/module").c_str(), module)->Apply(Measure);
}

[[maybe_unused]] const bool registered = [] {
    Register<4>("parse_position", ">CPOSMR=+1234567,-7654321,+250000\r\n", '\r');
    Register<17>("parse_switches", ">SSWC=0,0,0,0,0,0,0,0,0,0,0,0,1,0,0,0\r\n", '\r');
    Register<8>("parse_lamps", ">LABR=10000,5000,0,2500,0,0,0,0\r\n", ',');
    Register<14>("parse_motion", ">MCND=0,1,1,0,0,0,0,0,0,0,0,0,0\r\n", '\r');
    return true;
}();

}  // namespace
