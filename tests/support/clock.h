#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "platform/win32.h"

/// Time and threads for the tests that run on the module's own clock. Natively that is the clock
/// that jumps, with exact times; on Windows, and under the thread sanitizer, it is real time.
namespace test_support {

using std::chrono::milliseconds;

bool ClockJumps();

/// Whether the clock jumps, and no pauses are put in: then a wait takes as long as it says.
bool TimesAreExact();

inline milliseconds Now() {
    return milliseconds(GetTickCount64());
}

inline void Pause(milliseconds time) {
    Sleep(static_cast<DWORD>(time.count()));
}

/// Waits until the condition holds; false after a generous limit.
template <typename Condition>
bool Eventually(Condition condition, milliseconds limit = std::chrono::minutes(1)) {
    const milliseconds end = Now() + limit;
    while (!condition()) {
        if (Now() >= end) {
            return false;
        }
        Pause(milliseconds(1));
    }
    return true;
}

/// Whether a time is as expected: to two ticks where times are exact, and else between that less a
/// tick of Windows' clock and ten seconds more.
inline bool IsAbout(milliseconds time, milliseconds expected) {
    const milliseconds least = expected - milliseconds(TimesAreExact() ? 2 : 20);
    const milliseconds most = expected + milliseconds(TimesAreExact() ? 2 : 10'000);
    return time >= least && time <= most;
}

/// How long the work takes.
template <typename Work>
milliseconds TimeOf(Work work) {
    const milliseconds start = Now();
    work();
    return Now() - start;
}

/// A thread that the clock knows; its end is waited for.
class Thread {
  public:
    Thread() = default;
    explicit Thread(std::function<void()> work)
        : work_(std::make_unique<std::function<void()>>(std::move(work))),
          handle_(CreateThread(nullptr, 0, Run, work_.get(), 0, nullptr)) {}
    ~Thread() { Join(); }
    Thread(Thread&& other) noexcept
        : work_(std::move(other.work_)), handle_(std::exchange(other.handle_, nullptr)) {}
    Thread& operator=(Thread&& other) noexcept {
        Join();
        work_ = std::move(other.work_);
        handle_ = std::exchange(other.handle_, nullptr);
        return *this;
    }

    void Join() {
        if (handle_ != nullptr) {
            WaitForSingleObject(handle_, INFINITE);
            CloseHandle(std::exchange(handle_, nullptr));
        }
    }

  private:
    static DWORD WINAPI Run(LPVOID work) {
        (*static_cast<std::function<void()>*>(work))();
        return 0;
    }

    std::unique_ptr<std::function<void()>> work_;
    HANDLE handle_ = nullptr;
};

}  // namespace test_support
