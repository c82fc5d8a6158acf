#include "log_viewer/time_of_day.h"

#include <cstdio>

namespace log_viewer {

std::string StampText(const TimeOfDay& time) {
    char text[64];
    std::snprintf(text, sizeof(text), "[%02d:%02d:%02d.%03d] ", time.hour, time.minute, time.second,
                  time.millisecond);
    return text;
}

}  // namespace log_viewer
