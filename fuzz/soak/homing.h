#pragma once

#include "controller/controller_line.h"
#include "host/module_library.h"
#include "simulation/chance.h"
#include "soak/tally.h"

namespace soak {

/// Sends the Home command and plays the operator, who goes through with it, cancels, or closes the
/// dialog. Returns when the command has returned.
void HomeWithOperator(host_tool::ModuleLibrary& module, bool automatic,
                      test_support::SimulatedController& controller, Tally& tally,
                      simulation::Chance& chance);

}  // namespace soak
