#pragma once

#include "failing_calls/operations.h"

namespace failing {

/// Lives one life of the module with one operation in which calls fail, and holds it to the rules.
/// `bounds`: what may remain at the end. Once per process, and before anything of the layer was
/// used. A broken rule ends the process with status 3.
void Live(const Operation& operation, const Plan& plan, const Remains& bounds, Report& report);

}  // namespace failing
