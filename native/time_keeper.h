#pragma once

#include <atomic>
#include <cstdint>

namespace posix {

/// A point of the monotonic clock in nanoseconds.
using Deadline = std::int64_t;
inline constexpr Deadline Never = INT64_MAX;

/// Another time in the place of the system's: all of the layer's waits and looks at the clock go
/// there. Its threads are those that CreateThread makes and the one that set it up.
class TimeKeeper {
  public:
    /// What it knows of one thread.
    struct Place;

    virtual Deadline Now() = 0;
    virtual void SleepUntil(Deadline deadline) = 0;
    /// As FutexWaitUntil and FutexWakeAll.
    virtual bool WaitUntil(std::atomic<std::uint32_t>& word, std::uint32_t value,
                           Deadline deadline) = 0;
    virtual void WakeAll() = 0;
    /// Waits until some lock has been left; false at the deadline.
    virtual bool AwaitUnlock(Deadline deadline) = 0;
    virtual void Unlocked() = 0;
    /// A moment at which others may go on. No lock of the layer's own is held.
    virtual void Pause() = 0;

    /// Knows a thread before it is made; it runs between its own Begin and End.
    virtual Place* Announce() = 0;
    virtual void Withdraw(Place* place) = 0;
    virtual void Begin(Place* place) = 0;
    virtual void End() = 0;

  protected:
    ~TimeKeeper() = default;
};

/// Null for the system's time. Written once, while there is one thread.
[[gnu::visibility("hidden")]] extern TimeKeeper* timeKeeper;

}  // namespace posix
