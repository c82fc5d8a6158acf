#ifndef ZB_OVISK_PLAIN_H
#define ZB_OVISK_PLAIN_H

// NOLINTBEGIN(modernize-deprecated-headers): those of C, which has no others.
#include <stdbool.h>
#include <stdint.h>
// NOLINTEND(modernize-deprecated-headers)

/// @file
/// The module for hosts that are not built with its own compiler: plain C, flat records, nothing to
/// free. This header is all that such a host needs; it compiles as C11 and as C++ and needs no
/// other header of the module.
///
///     struct ZbOviskStage stage = {.size = sizeof stage};
///     OVISK_ZbrCmd(ZBOVISK_STARTUP, 0);
///     while (measuring) {
///         ZbOvisk_ReadStage(&stage);
///         if (!stage.xError) Show(stage.x);
///     }
///     OVISK_ZbrCmd(ZBOVISK_SHUTDOWN, 0);
///
/// Calling convention: that of C for the platform, which on 64-bit Windows is the only one. Every
/// `bool` is one byte, 0 or 1; records have the compiler's natural alignment, which by the order of
/// their members is the same everywhere. A record's `size` is set by the caller to the size of the
/// record that it was compiled with: the module knows by it which members the caller knows. Texts
/// are ASCII, cut to their array, and always end in a zero; the controller's own words are taken as
/// they came.

#if defined(_WIN32)
#if defined(ZBOVISK_BUILD)
#define ZBOVISK_API __declspec(dllexport)
#else
#define ZBOVISK_API __declspec(dllimport)
#endif
#else
#define ZBOVISK_API __attribute__((visibility("default")))
#endif

/// An age of something that has never been.
#define ZBOVISK_NEVER UINT64_MAX

/// The stage as the module has last seen it. Every part holds the values of the last good reply,
/// zeros before the first; ZbOviskHealth tells how old they are.
struct ZbOviskStage {
    uint32_t size;        ///< sizeof(struct ZbOviskStage), set by the caller
    int32_t x;            ///< position in the host's unit: counts divided by `ScaleFactor`, rounded
    int32_t y;            ///< as `x`
    int32_t z;            ///< as `x`
    int32_t xCounts;      ///< position in the controller's counts
    int32_t yCounts;      ///< as `xCounts`
    int32_t zCounts;      ///< as `xCounts`
    bool xError;          ///< the controller gave an error code for X: its numbers are no position
    bool yError;          ///< the same for Y
    bool zError;          ///< the same for Z
    bool lampChanged;     ///< latch: a lamp value has changed since the latches were last taken
    char xErrorText[32];  ///< the code, for example "E1"; empty without an error
    char yErrorText[32];  ///< as `xErrorText`
    char zErrorText[32];  ///< as `xErrorText`
    /// The sixteen fields of the switch reply, field n at n - 1. The emergency, Y, data and foot
    /// switch at 0, 2, 4 and 11 are latches, which stay 1 until ZbOvisk_GetAndClearLatches.
    int32_t switches[16];
    /// The seven fields of the lamp reply, field n at n - 1; the third is not kept and always 0.
    int32_t lamps[7];
};

/// ZbOviskHealth::worker
enum ZbOviskWorker {
    ZBOVISK_WORKER_NOT_STARTED = 0,
    ZBOVISK_WORKER_RUNS = 1,
    ZBOVISK_WORKER_STOPPED = 2,  ///< by OviskCmd_Shutdown
    ZBOVISK_WORKER_ENDED = 3     ///< by an exception: nothing is polled or sent any more
};

/// ZbOviskHealth::link
enum ZbOviskLink {
    ZBOVISK_LINK_NEVER_ANSWERED = 0,
    ZBOVISK_LINK_ANSWERS = 1,  ///< the last exchange was good
    ZBOVISK_LINK_FAILS = 2,    ///< the last exchange failed; a good one came before
    /// With `Reopen`: nothing goes out until the worker has mended the line. Moves and homing are
    /// refused, lamp values wait.
    ZBOVISK_LINK_LOST = 3
};

/// ZbOviskHealth::move and previousMove
enum ZbOviskMove {
    ZBOVISK_MOVE_NONE = 0,
    ZBOVISK_MOVE_UNDER_WAY = 1,
    ZBOVISK_MOVE_ENDED_WELL = 2,
    ZBOVISK_MOVE_ENDED_WITH_ERROR = 3,  ///< cancelled, failed, or at a limit
    ZBOVISK_MOVE_REFUSED = 4,           ///< the controller's answer began with "#": see moveText
    ZBOVISK_MOVE_REPLACED = 5,          ///< a newer move was accepted first; in previousMove only
    ZBOVISK_MOVE_LOST = 6  ///< its condition could not be read, or the worker is over: nobody knows
};

/// ZbOviskHealth::homing
enum ZbOviskHoming {
    ZBOVISK_HOMING_NONE = 0,
    ZBOVISK_HOMING_BY_HAND = 1,
    ZBOVISK_HOMING_AUTOMATIC = 2
};

/// ZbOviskHealth::lastHoming
enum ZbOviskHomingEnd {
    ZBOVISK_HOMING_END_NONE = 0,  ///< there was none yet
    ZBOVISK_HOMING_FINISHED = 1,
    ZBOVISK_HOMING_CANCELLED = 2,  ///< by the operator, or by a newer one
    ZBOVISK_HOMING_FAILED = 3
};

/// How the module and the line are, at one moment. Ages are in milliseconds.
struct ZbOviskHealth {
    uint32_t size;     ///< sizeof(struct ZbOviskHealth), set by the caller
    uint32_t version;  ///< of the module: 10000 * major + 100 * minor + patch

    int32_t worker;      ///< enum ZbOviskWorker
    int32_t homingMode;  ///< what OviskCmd_Home runs: 0 by hand, 1 automatic
    double scaleFactor;  ///< in force
    int32_t port;        ///< number of the port in force

    int32_t link;              ///< enum ZbOviskLink
    uint32_t failuresInRow;    ///< exchanges that have failed since the last good one
    uint32_t lastSystemError;  ///< the system's code of the last failed call on the port; 0: none
    uint64_t exchangesGood;    ///< since load
    uint64_t exchangesFailed;  ///< since load
    uint64_t millisecondsSinceGood;  ///< since the last good exchange, or ZBOVISK_NEVER
    char lastFailure[96];            ///< which request, and what happened; empty: none since load

    uint64_t positionAge;  ///< since the last good position, or ZBOVISK_NEVER
    uint64_t switchesAge;  ///< the same for the switches
    uint64_t lampsAge;     ///< the same for the lamps

    uint64_t movesAccepted;  ///< since load: the number of the newest move
    uint64_t movesEnded;     ///< of those: told, refused, replaced or lost
    int32_t move;            ///< the newest move: enum ZbOviskMove
    int32_t previousMove;    ///< how the one before it ended: enum ZbOviskMove
    int32_t moveTarget[3];   ///< of the newest move, X, Y and Z in counts
    char moveText[32];       ///< why the controller refused it

    /// How often the line was lost and had to be mended, since load; always 0 without `Reopen`. A
    /// controller that was off has lost its origin: home the stage again.
    uint32_t linkLosses;

    int32_t homing;      ///< what is under way: enum ZbOviskHoming
    int32_t homingAxis;  ///< 1: X, 2: Y, 0: none, or not confirmed yet
    int32_t lastHoming;  ///< how the last one ended: enum ZbOviskHomingEnd
};

/// Commands of OVISK_ZbrCmd. What each does, and what it demands of the calling thread, is told
/// with OviskCommand in zb_ovisk.h and in the integration document.
#define ZBOVISK_STARTUP 1u   ///< data: 1 selects automatic homing, anything else homing by hand
#define ZBOVISK_SHUTDOWN 2u  ///< stops the worker and closes the port, within about two seconds
#define ZBOVISK_HOME 3u      ///< data: parent window; runs a homing dialog

#ifdef __cplusplus
extern "C" {
#endif

/// Fills the record. Never waits for the line, allocates nothing, any thread. False, with nothing
/// written, when `stage` is null or its size is not one that the module knows.
ZBOVISK_API bool ZbOvisk_ReadStage(struct ZbOviskStage* stage);

/// The same for the health: one reading is one moment.
ZBOVISK_API bool ZbOvisk_ReadHealth(struct ZbOviskHealth* health);

// What is plain already.

/// Tells the end of a move, on the module's thread: return soon. `finished` is always true; `reply`
/// may be ignored.
struct McndReply;
#ifdef __cplusplus
typedef void (*CncNotifyCallback)(bool finished, bool error, const McndReply* reply, intptr_t data);
#else
typedef void (*CncNotifyCallback)(bool finished, bool error, const void* reply, intptr_t data);
#endif

/// Runs a command. Always true, for unknown commands too; those are logged.
ZBOVISK_API bool OVISK_ZbrCmd(uint32_t command, uintptr_t data);

/// Reads the latches and clears them in one step. All three outputs are written; none may be null.
/// True when a switch or a lamp change was latched. Never waits for the line.
ZBOVISK_API bool ZbOvisk_GetAndClearLatches(bool* anySwitchLatched, bool* emergencyLatched,
                                            bool* lampChangedLatched);

/// Sends the stage to an absolute position; a unit of x, y and z is 1000000 controller counts,
/// whatever `ScaleFactor` says. Takes one exchange on the caller's thread, behind the one that
/// runs. True: the controller answered and the move is watched; `callback`, if it is not null, is
/// called once with `data` when the move is over. False: no move is watched that was not before; a
/// target that is no number, or beyond about 2147.48 units, is refused before anything is sent.
///
/// The callback does not come when a newer move takes over, when the condition of the move can't be
/// read, or when the module is stopped. The health tells what became of the two newest moves.
ZBOVISK_API bool ZbOvisk_CncGotoAbsoluteNotifyWorld(double x, double y, double z,
                                                    CncNotifyCallback callback, intptr_t data);

/// Posts the brightness of a lamp: `lamp` 0 to 10, `value` 0 to 255 (values outside are taken as
/// the nearest limit). True when it is posted; false when there is no such lamp. Never waits.
ZBOVISK_API bool ZbOvisk_SetLight(int32_t lamp, int32_t value);

#ifdef __cplusplus
}
#endif

#endif
