#pragma once

#include "platform/thread_annotations.h"
#include "platform/win32.h"

/// Holds a critical section from its making to the end of its scope, on every way out.
class ZB_SCOPED_CAPABILITY LockHold {
  public:
    explicit LockHold(CRITICAL_SECTION& section) ZB_ACQUIRE(section) : section_(section) {
        EnterCriticalSection(&section_);
    }
    ~LockHold() ZB_RELEASE() { LeaveCriticalSection(&section_); }
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

  private:
    CRITICAL_SECTION& section_;
};
