#pragma once

#include <exception>

#include "platform/win32.h"

/// Runs the body of a dialog procedure. The system's frames lie between it and the module, so no
/// exception may leave it: an action that fails for lack of memory has not happened.
template <typename Body>
INT_PTR GuardedProcedure(Body body) noexcept {
    try {
        return body();
    } catch (const std::exception&) {
        return TRUE;
    }
}
