#include "process_figures.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

ThreadTimes TimesOfThreads() {
    ThreadTimes times;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        double nanoseconds = 0;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        times[std::stoull(task.path().filename())] = nanoseconds * 1e-9;
    }
    return times;
}

std::int64_t ResidentBytes() {
    std::int64_t all = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}
