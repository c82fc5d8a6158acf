#include "log_bench.h"

#include <memory>

#include "controller/log_tap.h"
#include "support/window.h"

namespace {

void Module(benchmark::State& state) {
    static test_support::LogBlock shared;
    WritePieces(state, shared.Characters(), [](const char* text) { LogChannel.WriteText(text); });
}
BENCHMARK(Module)->Name("log/module")->Apply(MeasureLog);

void ModuleWithViewer(benchmark::State& state) {
    std::unique_ptr<test_support::Window> viewer;
    if (state.thread_index() == 0) {
        viewer = std::make_unique<test_support::Window>(WIDE("Zembra Log"));
    }
    Module(state);
}
BENCHMARK(ModuleWithViewer)->Name("log_viewer/module")->Apply(MeasureLog);

}  // namespace
