#pragma once

#include <cstdio>

#include "simulation/plan.h"
#include "simulation/report.h"

namespace simulation {

/// Lives one life of the module, from its load to its unloading. Once per process, and before
/// anything of the layer was used. A broken rule ends the process with status 3.
void Live(const Plan& plan, Report& report, std::FILE* trace);

}  // namespace simulation
