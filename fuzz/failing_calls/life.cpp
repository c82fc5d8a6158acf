#include "failing_calls/life.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "native/headless.h"
#include "native/machine.h"
#include "native/virtual_time.h"
#include "support/machine.h"

namespace failing {
namespace {

using namespace std::chrono_literals;

void WriteSettings(const Operation& operation) {
    test_support::WriteSettings(
        "[Ovisk]\nPort=" + std::to_string(PortNumber) +
        "\nScaleFactor=250\nSerialLog=1\nDialog=" + (operation.isWithPanel ? "1" : "0") + "\n" +
        (operation.hasBothKeys ? "Reopen=1\nStrictReplies=1\n" : ""));
}

/// Open files, and mapped ones of the machine.
Remains LookAround() {
    Remains remains{};
    remains.descriptors = static_cast<std::uint32_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
    std::ifstream mappings("/proc/self/maps");
    for (std::string line; std::getline(mappings, line);) {
        remains.mappings += line.find(MachineRoot()) != line.npos ? 1 : 0;
    }
    return remains;
}

bool IsLoaded() {
    void* const library = dlopen(OVISK_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

/// The module comes back by itself, and with the next start if it was the worker's thread that the
/// system refused. It can't when its worker had no memory, which ends it, or when it took the
/// defaults for settings that it could not read: then it has to be loaded anew.
void ComeBack(World& world) {
    const Outcome& outcome = Result();
    const bool isLost = outcome.workerMemoryFailed || outcome.settingsFailed;
    if (world.module == nullptr || world.isStopped) {
        return;
    }
    if (world.isStarted) {
        RepairPanel();
        Require(world.IsLive() || isLost || outcome.threadFailed, "not alive again");
    }
    world.Start();
    const bool isLive = world.IsLive();
    Require(isLive || isLost, "not alive again after another start");
    Require(!isLive || isLost || outcome.lineFailed || world.isLampRefused ||
                !world.line.Awaits(LampRequest),
            "a lamp that was accepted is not set");
}

/// The host takes the module out of the process.
void PutAway(World& world) {
    if (world.module != nullptr) {
        world.StopForGood();
        world.Unload();
    }
    // A panel goes on being served, with the module behind it.
    Pass(3s);
    Require(!IsLoaded() || world.isPanelWanted, "the module can't be unloaded");
}

void LoadAnew(World& world) {
    world.line.SetSilent(false);
    world.Load();
    world.Start();
    Require(world.IsLive(), "not alive again after another load");
    PutAway(world);
}

void LookForRemains(const Remains& bounds, Report& report) {
    report.remains = LookAround();
    Require(report.remains.descriptors <= bounds.descriptors, "open files remain",
            std::to_string(report.remains.descriptors));
    Require(report.remains.mappings <= bounds.mappings, "mapped memory remains",
            std::to_string(report.remains.mappings));
    Require(headless::LoadedPictures() == 0, "loaded pictures remain");
}

void TakeOver(Report& report) {
    const Outcome& outcome = Result();
    report.calls = outcome.calls;
    report.placeCount =
        static_cast<std::uint32_t>(std::min(outcome.places.size(), report.places.size()));
    std::copy_n(outcome.places.begin(), report.placeCount, report.places.begin());
}

}  // namespace

void Live(const Operation& operation, const Plan& plan, const Remains& bounds, Report& report) {
    virtual_time::Start({.firstTick = 0});
    World life(report);
    theWorld = &life;
    life.port.emplace(PortNumber, life.line);
    // An error text that a string has to allocate, and a viewer, so that the log's event is used.
    life.line.Stage().At(simulator::AxisName::Z).Settings().error = "E17 the column has no origin";
    const WindowTitle viewer(u"Zembra Log");
    WriteSettings(operation);
    if (operation.hasBothKeys) {
        life.line.AllowQueries(RemoteRequest);  // With each return of the line.
    }
    life.isPanelWanted = operation.isWithPanel;

    operation.prepare(life);
    Begin(plan);
    operation.run(life);
    End();
    TakeOver(report);
    ComeBack(life);
    PutAway(life);
    if (!IsLoaded()) {
        LoadAnew(life);
    }
    LookForRemains(bounds, report);
    report.over = true;
}

}  // namespace failing
