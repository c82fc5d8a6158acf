#include "life_bench.h"

#include <string>

#include "controller/controller_line.h"
#include "host/library.h"
#include "host/module_library.h"
#include "support/machine.h"

// The library from outside, as a host meets it, loaded afresh for each life.

namespace {

using Clock = std::chrono::steady_clock;

std::filesystem::path LibraryWith(const std::string& settings) {
    test_support::WriteSettings(settings);
    return OVISK_LIBRARY;
}

class Module {
  public:
    explicit Module(unsigned poll)
        : library_(LibraryWith("[Ovisk]\nScaleFactor=1\nCmdPoll=" + std::to_string(poll) + "\n")),
          loaded_(Clock::now()) {
        Controller();
        library_.OVISK_ZbrCmd(OviskCmd_Startup, 0);
    }
    ~Module() {
        Stop();
        // The worker's thread has to leave the library before that is unloaded.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    static simulator::Controller& Controller() {
        static test_support::SimulatedController controller;
        return *controller.operator->();
    }
    double LoadSeconds() const { return std::chrono::duration<double>(loaded_ - made_).count(); }
    std::int32_t Position() {
        library_.ZbOvisk_GetOviskData(data_);
        return data_.cposmr.x;
    }
    void Stop() {
        if (!stopped_) {
            stopped_ = true;
            library_.OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
        }
    }

  private:
    Clock::time_point made_ = Clock::now();
    host_tool::ModuleLibrary library_;
    Clock::time_point loaded_;
    OviskData data_;
    bool stopped_ = false;
};
[[maybe_unused]] const bool registered = RegisterLife<Module>("module");

/// Loading and attaching, for the module and for a library with nothing in it.
template <const char* Path>
void MeasureLoad(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        const auto start = Clock::now();
        void* const library = host_tool::LoadLibraryFile(Path);
        const std::chrono::duration<double> time = Clock::now() - start;
        state.SetIterationTime(time.count());
        host_tool::UnloadLibraryFile(library);
    }
}

constexpr char EmptyLibrary[] = OVISK_EMPTY_LIBRARY;
constexpr char ModuleLibrary[] = OVISK_LIBRARY;

void Measure(benchmark::internal::Benchmark* bench) {
    bench->Iterations(1)->Repetitions(20)->UseManualTime()->Unit(benchmark::kMicrosecond);
}
BENCHMARK(MeasureLoad<EmptyLibrary>)->Name("load/floor")->Apply(Measure);
BENCHMARK(MeasureLoad<ModuleLibrary>)->Name("load/module")->Apply(Measure);

}  // namespace
