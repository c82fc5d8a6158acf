#pragma once

#include <span>

#include "failing_calls/world.h"

namespace failing {

/// Something that a host or an operator does with the module.
struct Operation {
    const char* name;
    /// What has gone well before.
    void (*prepare)(World& world);
    /// The part in which calls fail.
    void (*run)(World& world);
    bool isWithPanel = false;
    bool hasBothKeys = false;  ///< `Reopen` and `StrictReplies`
};

std::span<const Operation> Operations();

/// What the operations with a lamp have sent.
inline constexpr const char* LampRequest = "@LBRT3=5020\r\n";

/// The operator of a homing dialog, on a thread of its own while the Home command runs.
/// `cancels`: leaves the dialog as soon as X is under way.
void Home(World& world, bool cancels);

/// Presses the panel's buttons one after the other.
void UsePanel(World& world);
/// Brings the panel's boxes back to what they have to be, lets the module read them, and looks
/// whether the stream runs.
void RepairPanel();

}  // namespace failing
