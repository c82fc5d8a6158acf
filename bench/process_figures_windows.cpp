#include "process_figures.h"

#include "platform/win32.h"
// After the system's own first header.
#include <psapi.h>
#include <tlhelp32.h>

namespace {

double Seconds(const FILETIME& time) {
    constexpr double PerSecond = 1e7;
    return ((static_cast<double>(time.dwHighDateTime) * 4294967296.0) + time.dwLowDateTime) /
           PerSecond;
}

}  // namespace

ThreadTimes TimesOfThreads() {
    ThreadTimes times;
    const HANDLE list = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(list, &entry); more; more = Thread32Next(list, &entry)) {
        if (entry.th32OwnerProcessID != GetCurrentProcessId()) {
            continue;
        }
        const HANDLE thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
        FILETIME made{};
        FILETIME ended{};
        FILETIME kernel{};
        FILETIME user{};
        if (GetThreadTimes(thread, &made, &ended, &kernel, &user)) {
            times[entry.th32ThreadID] = Seconds(kernel) + Seconds(user);
        }
        CloseHandle(thread);
    }
    CloseHandle(list);
    return times;
}

std::int64_t ResidentBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    return static_cast<std::int64_t>(counters.WorkingSetSize);
}
