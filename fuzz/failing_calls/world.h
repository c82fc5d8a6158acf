#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "failing_calls/failing.h"
#include "failing_calls/line.h"
#include "failing_calls/report.h"
#include "host/module_library.h"

namespace failing {

inline constexpr unsigned PortNumber = 5;
inline constexpr double ScaleFactor = 250;
/// The two seconds that a stop may wait, and what its other calls take.
inline constexpr std::chrono::milliseconds LongestStop{2300};

/// One life of the module with its host and its controller. The clock lets one thread run at a
/// time, so nothing here has a lock.
struct World {
    explicit World(Report& itsReport) : report(itsReport) {}

    host_tool::ModuleLibrary& Module() { return *module; }
    /// Loads the module; false when that fails, as it may for lack of memory.
    void Load();
    void Start();
    /// Sends the shutdown; how long it took.
    std::chrono::nanoseconds Stop();
    /// Stops the module and waits until its worker has gone.
    void StopForGood();
    void Unload() { module.reset(); }
    /// Puts the stage somewhere else; whether the record follows.
    bool IsLive();

    Report& report;
    Line line;
    std::optional<LocalPort> port;
    std::unique_ptr<host_tool::ModuleLibrary> module;
    std::uintptr_t startData = 0;
    bool isPanelWanted = false;
    bool isStarted = false;
    bool isStopped = false;
    bool isLampRefused = false;
};

inline constexpr const char* RemoteRequest = "@SMOD=1\r\n";

/// The process's.
extern World* theWorld;

/// Ends the process with this as its violation unless the rule holds.
void Require(bool holds, const char* rule, const std::string& what = {});

/// Lets time pass, with the host's message loop running, until `done` or for the limit.
bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds limit);
inline void Pass(std::chrono::milliseconds time) {
    WaitFor([] { return false; }, time);
}

}  // namespace failing
