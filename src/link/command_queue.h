#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/lock_hold.h"

/// A command whose reply nobody waits for.
struct PostedCommand {
    std::uint32_t id = 0;  ///< of several waiting commands with one id only the newest is sent
    std::string text;      ///< the whole request with its line end
};

/// Who may post what: a lamp's number is its id, and each axis of homing has one.
inline constexpr std::uint32_t HomingXId = 100;
inline constexpr std::uint32_t HomingYId = 101;

/// Guards CommandQueue. Held for one addition or one pop, never during an exchange.
extern CRITICAL_SECTION CommandQueueLock;

/// The commands that wait, in the order of posting. Any thread adds, only the worker takes. Of a
/// kind that allocates nothing before the first addition, since the load can't fail.
extern std::vector<PostedCommand>& CommandQueue ZB_GUARDED_BY(CommandQueueLock);

/// The event that wakes the worker before its poll time-out has passed: named, automatic reset.
/// Null until the first start of the module; never closed. Written once, by a start.
extern std::atomic<HANDLE> CommandEvent;

/// Makes CommandEvent unless it is there; it stays null when the system refuses. Any thread.
void EnsureCommandEvent();

/// Makes a handle to the event, creating the event if nobody has. Null when the system refuses.
HANDLE OpenCommandEvent();

/// Whether a command of this id is one of homing.
constexpr bool IsHoming(std::uint32_t id) {
    return id == HomingXId || id == HomingYId;
}

/// Puts a command on the queue, in the place of the newest of its id while the line is lost, and
/// wakes the worker. True; false only for one of homing while the
/// line is lost: that is not kept. Says nothing about the controller. Any thread, at any time;
/// never waits for the line. Throws only std::bad_alloc.
bool PostCommand(std::uint32_t id, const std::string& text) ZB_EXCLUDES(CommandQueueLock);

/// Takes the oldest command, folds all newer ones of its id into it, and logs a line for each of
/// those: `entry` has the place of the oldest and the text of the newest. Until the next call it is
/// the one that can be called off. Commands of other ids keep their order. False when the queue is
/// empty; `entry` is then unchanged. Linear in the length of the queue.
bool ZbComPopUniqueCommandNoLock(PostedCommand& entry) ZB_REQUIRES(CommandQueueLock);

/// Takes back the commands with this text, of at most 15 characters, that have not been written
/// yet, one included that the worker has taken and that waits for the line. Any thread.
void WithdrawCommand(const char* text) ZB_EXCLUDES(CommandQueueLock);

/// Drops the homing commands that wait. None is added between the loss of the line and its mending.
/// The worker, between two commands.
void DropHomingCommands() ZB_EXCLUDES(CommandQueueLock);

/// Puts a command that could not be sent back to its place before all others. The worker.
void ReturnCommand(PostedCommand&& command) ZB_EXCLUDES(CommandQueueLock);

/// Whether a command of this id still waits to be sent. Any thread.
bool CommandWaits(std::uint32_t id) ZB_EXCLUDES(CommandQueueLock);

/// Sends a posted command and drops the reply. The result is that of the exchange.
bool RunPostedCommand(const char* text);

/// Life of the queue: made before anything else runs, freed as one of the module's last acts.
void MakeCommandQueue() ZB_NO_THREAD_SAFETY_ANALYSIS;
void FreeCommandQueue() ZB_NO_THREAD_SAFETY_ANALYSIS;
