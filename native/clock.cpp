#include "native/clock.h"

#include <linux/futex.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

#include "platform/win32.h"

#if defined(__SANITIZE_THREAD__)
#define ZB_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZB_THREAD_SANITIZER
#endif
#endif

namespace posix {
namespace {

constexpr Deadline PerSecond = 1'000'000'000;
constexpr Deadline PerMillisecond = 1'000'000;

timespec ToTimespec(Deadline time) {
    return {.tv_sec = time / PerSecond, .tv_nsec = time % PerSecond};
}

/// The kernel adds 50 us to a thread's waits unless the thread asks it not to.
void MakeWaitsPrecise() {
    thread_local bool done = false;
    if (!done) {
        done = true;
        prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    }
}

long Futex(std::atomic<std::uint32_t>& word, int operation, std::uint32_t value,
           const timespec* time) {
    return syscall(SYS_futex, static_cast<void*>(&word), operation, value, time, nullptr,
                   FUTEX_BITSET_MATCH_ANY);
}

int LockUntilInOtherTime(pthread_mutex_t& mutex, Deadline deadline) {
    int result = pthread_mutex_trylock(&mutex);
    while (result == EBUSY && timeKeeper->AwaitUnlock(deadline)) {
        result = pthread_mutex_trylock(&mutex);
    }
    return result == EBUSY ? ETIMEDOUT : result;
}

}  // namespace

constinit TimeKeeper* timeKeeper = nullptr;

Deadline Now() {
    if (timeKeeper != nullptr) {
        return timeKeeper->Now();
    }
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * PerSecond + now.tv_nsec;
}

Deadline After(std::uint32_t milliseconds) {
    return milliseconds == INFINITE ? Never : Now() + milliseconds * PerMillisecond;
}

void SleepUntil(Deadline deadline) {
    if (timeKeeper != nullptr) {
        return timeKeeper->SleepUntil(deadline);
    }
    MakeWaitsPrecise();
    const timespec time = ToTimespec(deadline);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

bool FutexWaitUntil(std::atomic<std::uint32_t>& word, std::uint32_t value, Deadline deadline) {
    if (timeKeeper != nullptr) {
        return timeKeeper->WaitUntil(word, value, deadline);
    }
    MakeWaitsPrecise();
    const timespec time = ToTimespec(deadline);
    const long result = Futex(word, FUTEX_WAIT_BITSET, value, deadline == Never ? nullptr : &time);
    return result == 0 || errno != ETIMEDOUT;
}

void FutexWakeAll(std::atomic<std::uint32_t>& word) {
    if (timeKeeper != nullptr) {
        return timeKeeper->WakeAll();
    }
    Futex(word, FUTEX_WAKE_BITSET, INT_MAX, nullptr);
}

short PollUntil(int file, short events, Deadline deadline) {
    MakeWaitsPrecise();
    pollfd entry{.fd = file, .events = events, .revents = 0};
    for (;;) {
        Deadline left = 0;
        if (deadline != Never) {
            left = deadline - Now();
            left = left < 0 ? 0 : left;
        }
        const timespec time = ToTimespec(left);
        const int count = ppoll(&entry, 1, deadline == Never ? nullptr : &time, nullptr);
        if (count >= 0) {
            return count == 0 ? short{0} : entry.revents;
        }
        if (errno != EINTR) {
            return POLLERR;
        }
    }
}

int LockInOtherTime(pthread_mutex_t& mutex) {
    timeKeeper->Pause();
    return LockUntilInOtherTime(mutex, Never);
}

int UnlockInOtherTime(pthread_mutex_t& mutex) {
    const int result = pthread_mutex_unlock(&mutex);
    timeKeeper->Unlocked();
    timeKeeper->Pause();
    return result;
}

int LockUntil(pthread_mutex_t& mutex, Deadline deadline) {
    if (timeKeeper != nullptr) {
        return LockUntilInOtherTime(mutex, deadline);
    }
    MakeWaitsPrecise();
    if (deadline == Never) {
        return pthread_mutex_lock(&mutex);
    }
#ifdef ZB_THREAD_SANITIZER
    // The sanitizer does not see pthread_mutex_clocklock, and would take the unlock for a fault.
    int result = pthread_mutex_trylock(&mutex);
    while (result == EBUSY && Now() < deadline) {
        SleepUntil(Now() + PerMillisecond);
        result = pthread_mutex_trylock(&mutex);
    }
    return result == EBUSY ? ETIMEDOUT : result;
#else
    const timespec time = ToTimespec(deadline);
    return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &time);
#endif
}

}  // namespace posix

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0 && posix::timeKeeper == nullptr) {
        sched_yield();
    } else {
        posix::SleepUntil(posix::After(milliseconds));
    }
}

ULONGLONG GetTickCount64() {
    posix::Breathe();
    return static_cast<ULONGLONG>(posix::Now() / posix::PerMillisecond);
}

DWORD GetTickCount() {
    return static_cast<DWORD>(GetTickCount64());
}
