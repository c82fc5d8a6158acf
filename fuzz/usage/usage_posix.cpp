#include <malloc.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>

#include "usage/usage.h"

namespace {

std::size_t CountEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t ResidentBytes() {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

/// The platform layer maps two pages for each handle of a named object.
const Usage LeftByALoad{.memory = std::size_t{16} * 1024, .heap = 256, .handles = 2, .threads = 0};

Usage MeasureUsage() {
    const struct mallinfo2 heap = mallinfo2();
    return {.memory = ResidentBytes(),
            .heap = heap.uordblks + heap.hblkhd,
            .handles = CountEntries("/proc/self/fd") - 1,  // Less the one that counts.
            .threads = CountEntries("/proc/self/task")};
}

std::chrono::nanoseconds ProcessorTime() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}
