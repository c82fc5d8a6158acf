#include <dlfcn.h>

#include <cstdlib>

#include "platform/win32.h"
#include "simulation/world.h"

// Only the time-outs tell a look at what waits on the line from the reading of a reply.

BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts) {
    static const auto original = [] {
        Dl_info own{};
        dladdr(reinterpret_cast<void*>(&SetCommTimeouts), &own);
        void* const found = dlsym(RTLD_NEXT, own.dli_sname);
        return found != nullptr ? reinterpret_cast<decltype(&SetCommTimeouts)>(found)
                                : (std::abort(), nullptr);
    }();
    simulation::world->wire.Look(timeouts->ReadIntervalTimeout == MAXDWORD);
    return original(file, timeouts);
}
