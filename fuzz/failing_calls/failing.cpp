#include "failing_calls/failing.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unordered_set>

#include "failing_calls/world.h"

namespace failing {
namespace {

constexpr Source Memory{"operator new"};
constexpr int DeepestWay = 32;
using Way = std::array<void*, DeepestWay>;

// The virtual clock lets one thread run at a time, so nothing here has a lock.
bool isOpen = false;
Plan plan;
Outcome outcome;
std::unordered_set<std::uint64_t> seenWays;
thread_local bool isHost = false;

bool LiesIn(const void* address, const char* library) {
    dl_find_object found{};
    return _dl_find_object(const_cast<void*>(address), &found) == 0 &&
           std::strstr(found.dlfo_link_map->l_name, library) != nullptr;
}

bool IsModule(const void* address) {
    return LiesIn(address, "libZbOvisk");
}

/// Whether the standard library works for the module: the first frame above it tells.
bool ServesModule() {
    Way way{};
    const int depth = backtrace(way.data(), DeepestWay);
    bool isInside = false;
    for (int i = 0; i < depth; ++i) {
        const bool isStandard = LiesIn(way[static_cast<std::size_t>(i)], "libstdc++");
        if (isInside && !isStandard) {
            return IsModule(way[static_cast<std::size_t>(i)]);
        }
        isInside = isInside || isStandard;
    }
    return false;
}

/// Adds the place unless a call came from there before: told apart by the whole way through the
/// module, whoever called that.
void NotePlace() {
    Way way{};
    const auto depth = static_cast<std::size_t>(backtrace(way.data(), DeepestWay));
    std::size_t length = depth;
    while (length != 0 && !IsModule(way[length - 1])) {
        --length;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(way.data()), length * sizeof(void*));
    const std::uint64_t digest = std::hash<std::string_view>()(bytes);
    if (seenWays.insert(digest).second) {
        outcome.places.push_back({digest, outcome.calls});
    }
}

bool IsLine(std::string_view name) {
    return name == "CreateFileA" || name == "ReadFile" || name == "WriteFile" ||
           name.find("Comm") != name.npos;
}

void NoteFailure(const Source& source) {
    const std::string_view name = source.name;
    outcome.lineFailed = outcome.lineFailed || IsLine(name);
    const bool isLoading = theWorld->module == nullptr;
    outcome.settingsFailed =
        outcome.settingsFailed || (isLoading && name.starts_with("GetPrivateProfile"));
    outcome.threadFailed =
        outcome.threadFailed || name == "CreateThread" || name == "GetModuleHandleExW";
    if (&source == &Memory) {
        outcome.memoryFailed = true;
        outcome.workerMemoryFailed = outcome.workerMemoryFailed || !isHost;
    }
}

bool CountAndDecide(const Source& source) {
    ++outcome.calls;
    if (plan.call == 0) {
        NotePlace();
        return false;
    }
    if (outcome.calls == plan.call) {
        outcome.failed = &source;
        std::snprintf(theWorld->report.failed, sizeof theWorld->report.failed, "%s", source.name);
    }
    const bool fails =
        outcome.calls == plan.call ||
        (outcome.failed != nullptr &&
         (plan.mode == Mode::All || (plan.mode == Mode::Function && outcome.failed == &source)));
    if (fails) {
        NoteFailure(source);
    }
    return fails;
}

}  // namespace

void Begin(const Plan& chosen) {
    plan = chosen;
    isHost = true;
    isOpen = true;
}

void End() {
    isOpen = false;
}

const Outcome& Result() {
    return outcome;
}

bool Fails(const Source& source, const void* caller) {
    return isOpen && IsModule(caller) && CountAndDecide(source);
}

bool MemoryFails(const void* caller) {
    if (!isOpen) {
        return false;
    }
    const bool isModules = IsModule(caller) || (LiesIn(caller, "libstdc++") && ServesModule());
    return isModules && CountAndDecide(Memory);
}

}  // namespace failing
