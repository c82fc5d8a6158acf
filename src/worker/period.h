#pragma once

#include "platform/win32.h"

/// Tells each time that more than a period has passed since it last did, or since it was first
/// asked. One thread.
class Period {
  public:
    constexpr explicit Period(ULONGLONG milliseconds) : milliseconds_(milliseconds) {}

    bool HasPassed() {
        const ULONGLONG now = GetTickCount64();
        if (!isRunning_) {
            isRunning_ = true;
            last_ = now;
        }
        const bool hasPassed = now - last_ > milliseconds_;
        last_ = hasPassed ? now : last_;
        return hasPassed;
    }

  private:
    const ULONGLONG milliseconds_;
    ULONGLONG last_ = 0;
    bool isRunning_ = false;
};
