#pragma once

#include <atomic>

#include "platform/lock_hold.h"
#include "stage/cnc_notify.h"

/// 1 while a move is watched. Set when a move was accepted and cleared by the worker, both with the
/// lock of the watch held.
extern std::atomic<std::uint8_t> MoveActive;

/// Sends the stage to an absolute position and has the worker watch the move. A unit is 1000000
/// controller counts. True when the controller's reply had the right form; the watch has then begun
/// and replaces that of any earlier move, which gets no notice. False: nothing is watched, or still
/// the earlier move; a target that is no number or beyond the controller's 32-bit counts is refused
/// with a log line before anything is sent. Any thread; takes one exchange. Moves of several
/// threads are watched in the order in which the controller took them.
bool MoveAbsolute(double x, double y, double z, CncNotifyCallback callback, std::intptr_t data);

/// Makes the lock of the moves ready. Part of process attach.
void MakeMoveLock();

/// Asks how the watched move stands and tells its end. Called by the worker in a status poll while
/// MoveActive is set. A condition that can't be read ends the watch without a notice.
void TestMove();
