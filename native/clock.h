#pragma once

#include <poll.h>
#include <pthread.h>

#include "native/time_keeper.h"

/// The layer's time: everything that reads it or waits for it does so here. A deadline is a point
/// of the monotonic clock in nanoseconds. Signals never end a wait early.
namespace posix {

/// Now, in nanoseconds.
Deadline Now();

/// The point so many milliseconds from now; Never for INFINITE.
Deadline After(std::uint32_t milliseconds);

void SleepUntil(Deadline deadline);

/// Sleeps while the word holds the value, for any process that maps it; may also return without
/// reason. False once the deadline has passed.
bool FutexWaitUntil(std::atomic<std::uint32_t>& word, std::uint32_t value, Deadline deadline);

/// Wakes all who wait on the word.
void FutexWakeAll(std::atomic<std::uint32_t>& word);

/// poll() for one file; the events that came, 0 at the deadline.
short PollUntil(int file, short events, Deadline deadline);

/// pthread_mutex_lock with a deadline; its results, and ETIMEDOUT.
int LockUntil(pthread_mutex_t& mutex, Deadline deadline);

/// For the end of a call from outside: with another time, others may go on here. Under no lock.
inline void Breathe() {
    if (timeKeeper != nullptr) {
        timeKeeper->Pause();
    }
}

int LockInOtherTime(pthread_mutex_t& mutex);
int UnlockInOtherTime(pthread_mutex_t& mutex);

/// A critical section's way to its lock and out of it, as short as it can be.
inline int Lock(pthread_mutex_t& mutex) {
    return timeKeeper == nullptr ? pthread_mutex_lock(&mutex) : LockInOtherTime(mutex);
}
inline int Unlock(pthread_mutex_t& mutex) {
    return timeKeeper == nullptr ? pthread_mutex_unlock(&mutex) : UnlockInOtherTime(mutex);
}

}  // namespace posix
