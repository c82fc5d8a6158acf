#include <cstdio>

#include "controller/controller_line.h"
#include "controller/log_tap.h"
#include "host/module_library.h"
#include "peers/roles.h"
#include "support/machine.h"
#include "usage/require.h"
#include "usage/usage.h"

namespace peers {
namespace {

using namespace std::chrono_literals;
using test_support::Eventually;

/// After so many rounds the C library and the loader have all that they keep.
constexpr std::size_t WarmUp = 10;
constexpr std::size_t HeapTolerance = std::size_t{16} * 1024;
constexpr std::size_t MemoryTolerance = std::size_t{2} * 1024 * 1024;

OviskData Read(host_tool::ModuleLibrary& module) {
    OviskData data;
    module.ZbOvisk_GetOviskData(data);
    return data;
}

void LiveOnce(test_support::SimulatedController& controller, int place) {
    controller->With([&](simulator::StageModel& stage) { stage.Place({100.0 * place, 0, 0}); });
    const std::size_t threads = MeasureUsage().threads;
    host_tool::ModuleLibrary module(OVISK_LIBRARY);
    Require(Read(module).cposmr.x == 0, "the library was not unloaded");
    module.OVISK_ZbrCmd(OviskCmd_Startup, 0);
    Require(Eventually([&] { return Read(module).cposmr.x == place; }), "no position came");
    module.ZbOvisk_SetLight(1, place % 256);
    const ULONGLONG start = GetTickCount64();
    module.OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
    Require(GetTickCount64() - start < 1900, "the worker did not end");
    Require(Eventually([&] { return MeasureUsage().threads <= threads; }), "a thread stays");
}

bool IsBack(const char* what, std::size_t before, std::size_t after, std::size_t tolerance) {
    const bool back = after <= before + tolerance;
    std::printf("  %-8s %10zu before, %10zu after, tolerance %zu%s\n", what, before, after,
                tolerance, back ? "" : "  TOO MANY");
    return back;
}

}  // namespace

int LoadAndUnload(std::size_t rounds) {
    test_support::WriteSettings("[Ovisk]\nCmdPoll=5\n");
    test_support::SimulatedController controller({.bitsPerSecond = 0, .longestLog = 20});
    Usage before{};
    for (std::size_t round = 0; round < WarmUp + rounds; ++round) {
        if (round == WarmUp) {
            before = MeasureUsage();
        }
        LiveOnce(controller, static_cast<int>(round + 1));
    }
    const Usage after = Without(rounds, MeasureUsage());
    bool back = IsBack("threads", before.threads, after.threads, 0);
    back &= IsBack("handles", before.handles, after.handles, 0);
    back &= IsBack("heap", before.heap, after.heap, HeapTolerance);
    back &= IsBack("memory", before.memory, after.memory, MemoryTolerance);
    std::printf("  without what each load leaves: %zu handles, %zu bytes of heap\n",
                LeftByALoad.handles, LeftByALoad.heap);
    return back ? 0 : 1;
}

}  // namespace peers
