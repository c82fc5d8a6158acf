#pragma once

#include <string>

namespace log_viewer {

/// The local time of day.
struct TimeOfDay {
    int hour;
    int minute;
    int second;
    int millisecond;
};

/// Now, by this machine's clock.
TimeOfDay Now();

/// `[HH:MM:SS.mmm] `, as it stands before a line.
std::string StampText(const TimeOfDay& time);

}  // namespace log_viewer
