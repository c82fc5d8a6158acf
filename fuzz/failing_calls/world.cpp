#include "failing_calls/world.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "native/headless.h"
#include "native/virtual_time.h"

namespace failing {
namespace {

using namespace std::chrono_literals;

constexpr int BrokenRule = 3;

std::ptrdiff_t Threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// Waits until this thread is the only one. An ended thread takes a moment of real time to go.
bool IsAlone() {
    for (int left = 30; left > 0; --left) {
        for (int tries = 20; tries > 0; --tries) {
            if (Threads() == 1) {
                return true;
            }
            usleep(100);
        }
        Pass(1s);
    }
    return false;
}

}  // namespace

World* theWorld = nullptr;

void Require(bool holds, const char* rule, const std::string& what) {
    if (!holds) {
        std::snprintf(theWorld->report.violation, sizeof theWorld->report.violation, "%s %s", rule,
                      what.c_str());
        _exit(BrokenRule);
    }
}

bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    return headless::RunMessages(done, limit);
}

void World::Load() {
    module = std::make_unique<host_tool::ModuleLibrary>(OVISK_LIBRARY);
}

void World::Start() {
    line.Allow(RemoteRequest);
    isStarted = true;
    Require(Module().OVISK_ZbrCmd(OviskCmd_Startup, startData), "a start answers false");
}

std::chrono::nanoseconds World::Stop() {
    const auto start = virtual_time::Elapsed();
    isStopped = true;
    Require(Module().OVISK_ZbrCmd(OviskCmd_Shutdown, 0), "a stop answers false");
    return virtual_time::Elapsed() - start;
}

void World::StopForGood() {
    Require(Stop() <= LongestStop, "the stop takes too long");
    Require(IsAlone(), "the worker does not end");
    line.SetSilent(true);
    Pass(3s);
}

bool World::IsLive() {
    static int count = 0;
    // More than once, since a homing may still be under way, which takes the stage elsewhere.
    for (int left = 3; left > 0; --left) {
        const std::int32_t x = 250 * ++count;
        line.Stage().Place({x * ScaleFactor, -1000 * ScaleFactor, 0});
        const auto isSeen = [&] {
            OviskData data;
            return Module().ZbOvisk_GetOviskData(data) && data.cposmr.x == x &&
                   data.cposmr.y == -1000;
        };
        if (WaitFor(isSeen, 4s)) {
            return true;
        }
    }
    return false;
}

}  // namespace failing
