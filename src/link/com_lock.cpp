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

/// A request is stored before the lock is tried, and the lock is given back before the request is
/// looked at once more: so one of the two sides always sees the other, and no request is left over.
void ServeRequests() ZB_EXCLUDES(ComLock) {
    std::atomic_thread_fence(std::memory_order_seq_cst);
    while (closeRequested.load()) {
        if (!TryEnterCriticalSection(&ComLock)) {
            return;  // Whoever holds it serves the request on leaving.
        }
        CloseIfRequested();
        LeaveCriticalSection(&ComLock);
        std::atomic_thread_fence(std::memory_order_seq_cst);
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
