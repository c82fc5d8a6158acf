#include <array>

#include "platform/win32.h"
#include "usage/usage.h"

// These two need the types of the first.
#include <psapi.h>
#include <tlhelp32.h>

namespace {

std::size_t CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
         more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
    }
    CloseHandle(snapshot);
    return count;
}

/// One by one, since Wine's GetProcessHandleCount knows none.
std::size_t CountHandles() {
    constexpr std::uintptr_t Highest = 0x4000;
    std::size_t count = 0;
    for (std::uintptr_t handle = 4; handle < Highest; handle += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) != FALSE ? 1U : 0U;
    }
    return count;
}

std::size_t BytesOf(HANDLE heap) {
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heap);
    while (HeapWalk(heap, &entry) != FALSE) {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    HeapUnlock(heap);
    return bytes;
}

std::size_t AllocatedBytes() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
        bytes += BytesOf(heaps[i]);
    }
    return bytes;
}

std::chrono::nanoseconds ToTime(const FILETIME& time) {
    return std::chrono::nanoseconds(100) *
           ((std::int64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
}

}  // namespace

/// Each library that has libstdc++ in it sets 73 KiB aside for exceptions when memory has run out,
/// and never frees them, whatever the library is. They are not touched, so they take no main
/// memory.
const Usage LeftByALoad{.memory = 0, .heap = 74'752 + 1024, .handles = 2, .threads = 0};

Usage MeasureUsage() {
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    return {.memory = memory.WorkingSetSize,
            .heap = AllocatedBytes(),
            .handles = CountHandles(),
            .threads = CountThreads()};
}

std::chrono::nanoseconds ProcessorTime() {
    FILETIME made{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user);
    return ToTime(kernel) + ToTime(user);
}
