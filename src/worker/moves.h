#pragma once

#include <array>
#include <atomic>

#include "link/link_health.h"
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

/// What became of a move. The numbers are those of the plain interface.
enum class MoveState {
    None = 0,
    UnderWay = 1,
    EndedWell = 2,
    EndedWithError = 3,
    Refused = 4,   ///< the controller's answer began with "#"
    Replaced = 5,  ///< a newer move was accepted before its end was known
    Lost = 6,      ///< its condition could not be read, or nobody reads it any more
};

/// The moves since load.
struct MoveHealth {
    std::uint64_t accepted = 0;
    std::uint64_t ended = 0;
    MoveState newest = MoveState::None;
    MoveState previous = MoveState::None;
    std::array<std::int32_t, 3> target{};  ///< of the newest, in counts
    std::array<char, 32> refusal{};        ///< the controller's words, if it was refused
};
extern MoveHealth moveHealth ZB_GUARDED_BY(HealthLock);

/// Tells the watched move, if there is one, as ended with an error: the line is lost, and with it
/// what becomes of the move. Called by the worker.
void BreakOffMove() ZB_EXCLUDES(HealthLock);

/// Gives a move under way up for lost. Called by the worker as it ends, in one with its note of
/// that: a move that is accepted later is lost from the first.
void LoseMove() ZB_REQUIRES(HealthLock);

/// Asks how the watched move stands and tells its end. Called by the worker in a status poll while
/// MoveActive is set. A condition that can't be read ends the watch without a notice; with `Reopen`
/// the watch goes on, until the condition is read or the line is lost.
void TestMove();
