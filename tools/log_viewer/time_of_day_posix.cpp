#include <ctime>

#include "log_viewer/time_of_day.h"

namespace log_viewer {

TimeOfDay Now() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    return {.hour = local.tm_hour,
            .minute = local.tm_min,
            .second = local.tm_sec,
            .millisecond = static_cast<int>(now.tv_nsec / 1'000'000)};
}

}  // namespace log_viewer
