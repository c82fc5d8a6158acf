#include "log_viewer/time_of_day.h"
#include "platform/win32.h"

namespace log_viewer {

TimeOfDay Now() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {.hour = now.wHour,
            .minute = now.wMinute,
            .second = now.wSecond,
            .millisecond = now.wMilliseconds};
}

}  // namespace log_viewer
