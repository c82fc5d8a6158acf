#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "host/module_library.h"
#include "simulation/chance.h"
#include "soak/tally.h"

namespace soak {

/// The host's threads that go their ways whatever happens to the stage: three that read the record,
/// one that takes the latches, one that sets lamps, and the log's viewer, who comes and goes.
class Clerks {
  public:
    Clerks(host_tool::ModuleLibrary& module, Tally& tally, simulation::Chance& chance);
    /// They go home.
    ~Clerks();
    Clerks(const Clerks&) = delete;
    Clerks& operator=(const Clerks&) = delete;

  private:
    using Work = void (Clerks::*)(simulation::Chance&);

    void Employ(Work work, simulation::Chance& chance);
    void Read(simulation::Chance& chance);
    void TakeLatches(simulation::Chance& chance);
    void SetLamps(simulation::Chance& chance);
    void ViewLog(simulation::Chance& chance);
    /// Waits for a while, or until everybody goes home.
    void Rest(std::int64_t milliseconds) const;

    host_tool::ModuleLibrary& module_;
    Tally& tally_;
    std::atomic<bool> stop_{false};
    std::vector<std::thread> threads_;
};

}  // namespace soak
