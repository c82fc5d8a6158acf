#pragma once

#include <atomic>
#include <memory>

#include "platform/win32.h"

/// Room for an object whose life begins and ends where the module says so, not where the runtime
/// does: threads may use it while static objects come and go.
template <typename Object>
union Late {
    constexpr Late() : empty() {}
    ~Late() {}
    void Begin() { std::construct_at(&object); }
    void End() { std::destroy_at(&object); }

    char empty;
    Object object;
};

/// The handle in the slot, made at first need: of two threads that make it at once one wins, and
/// the other's is closed. Null when the system refuses; the next call tries again.
template <typename Make>
HANDLE KeepOne(std::atomic<HANDLE>& slot, const Make& make) {
    HANDLE kept = slot.load();
    if (kept != nullptr) {
        return kept;
    }
    const HANDLE made = make();
    if (made == nullptr) {
        return slot.load();
    }
    if (slot.compare_exchange_strong(kept, made)) {
        return made;
    }
    CloseHandle(made);
    return kept;
}
