#pragma once

#include <string>

#include "host/module_library.h"
#include "simulation/health.h"
#include "simulation/mirror.h"
#include "simulation/rules.h"
#include "simulation/trace.h"
#include "simulation/wire.h"

namespace simulation {

/// One life of the module and everything around it. The clock lets one thread run at a time, so
/// nothing here has a lock.
struct World {
    World(const Plan& itsPlan, Report& itsReport, std::FILE* traceFile)
        : plan(itsPlan), report(itsReport), trace(traceFile) {}

    const Plan plan;
    Report& report;
    Trace trace;
    Mirror mirror{plan.scaleFactor};
    LampRules lamps;
    MoveRules moves{report, plan.bothKeys};
    HomingRules homing{report, plan.automatic};
    HealthRules health{plan};
    Wire wire{plan, report};
    host_tool::ModuleLibrary* module = nullptr;
    bool starts = false;      ///< a start is under way and has not set remote mode yet
    bool portIsGone = false;  ///< pulled out: exchanges fail that the line never sees
    bool stopping = false;    ///< the host's threads are to end
    bool calm = false;        ///< nobody makes trouble any more
};

/// The process's.
extern World* world;

/// How the module says that it is.
ZbOviskHealth Health();

/// Every thread that the simulation has not made is the module's own: its worker.
inline const std::string Worker = "worker";

/// The health as it is, held to nothing.
ZbOviskHealth HealthNow();

/// The name of the calling thread.
const std::string& ThisThread();
void NameThisThread(const std::string& name);

}  // namespace simulation
