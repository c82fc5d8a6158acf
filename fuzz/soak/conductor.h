#pragma once

#include <chrono>
#include <functional>

#include "controller/controller_line.h"
#include "simulation/chance.h"
#include "soak/tally.h"

namespace soak {

/// One life of the module, from load to unload, under a mixed load: rounds of trouble on the line
/// and of calm, in which everything has to come right, until the time is up. `look` is called in
/// the end, with the module still running and nothing else. Ends the process when data goes stale,
/// a move of a calm line is refused or its end not told, or a call takes too long.
void LiveOnce(test_support::SimulatedController& controller, std::chrono::seconds length,
              simulation::Chance& chance, Tally& tally, const std::function<void()>& look);

}  // namespace soak
