#include "link/com_lock.h"

#include <atomic>

namespace {

/// Held by the thread that is next at ComLock. Whoever leaves ComLock and comes straight back finds
/// it taken and has to queue up, so that a busy worker shuts nobody out for more than the exchange
/// under way. Guards nothing; taken before ComLock and given back once that is held.
CRITICAL_SECTION nextTurn;

std::atomic<bool> closeRequested{false};

void CloseIfRequested() ZB_REQUIRES(ComLock) {
    if (closeRequested.exchange(false)) {
        ZbComClose();
    }
}

/// Serves a request that came while the lock was held, or leaves it to whoever holds the lock by
/// now. A request is stored before the lock is tried, and the lock is given back before the request
/// is looked at, so one of the two sides always sees the other. The fence keeps both orders on
/// processors that would let the later step overtake: locks order what is within them only.
void ServeRequests() ZB_EXCLUDES(ComLock) {
    for (;;) {
        std::atomic_thread_fence(std::memory_order_seq_cst);
        if (!closeRequested.load() || !TryEnterCriticalSection(&ComLock)) {
            return;
        }
        CloseIfRequested();
        LeaveCriticalSection(&ComLock);
    }
}

}  // namespace

void MakeComLock() {
    InitializeCriticalSection(&nextTurn);
    InitializeCriticalSection(&ComLock);
}

void FreeComLock() {
    DeleteCriticalSection(&ComLock);
    DeleteCriticalSection(&nextTurn);
}

ComLockHold::ComLockHold() {
    EnterCriticalSection(&nextTurn);
    EnterCriticalSection(&ComLock);
    LeaveCriticalSection(&nextTurn);
}

ComLockHold::~ComLockHold() {
    CloseIfRequested();
    LeaveCriticalSection(&ComLock);
    ServeRequests();
}

void ClosePortWhenFree() {
    closeRequested.store(true);
    ServeRequests();
}
