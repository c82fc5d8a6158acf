#include "worker/moves.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "link/line_gate.h"
#include "link/protocol.h"
#include "log/zbr_log.h"
#include "replies/queries.h"
#include "replies/query.h"
#include "settings/settings.h"
#include "worker/worker_thread.h"

std::atomic<std::uint8_t> MoveActive{0};

namespace {

constexpr double CountsPerUnit = 1000000.0;

/// The accepted move that the controller took last. The number is that of its exchange: of two
/// threads' moves the one with the greater number stays, whichever thread comes here first.
struct Watch {
    CncNotifyCallback MoveCallback = nullptr;
    std::intptr_t MoveData = 0;
    std::uint64_t number = 0;
    std::uint32_t losses = 0;  ///< of the line, before the exchange
};
Watch watch ZB_GUARDED_BY(HealthLock);

/// The target in counts. False when the controller has no such count.
bool ToCounts(double target, std::int32_t& counts) {
    using Limits = std::numeric_limits<std::int32_t>;
    const double product = target * CountsPerUnit;
    // Written so that a value that is no number fails it too. The limits are half a count wider,
    // less the halves that would round out of range.
    if (!(product > Limits::min() - 0.5 && product < Limits::max() + 0.5)) {
        return false;
    }
    counts = static_cast<std::int32_t>(std::lround(product));
    return true;
}

bool HasError(const McndReply& reply) {
    constexpr std::int32_t Failed = 2;
    return reply.cancelled == 1 || reply.xResult == Failed || reply.yResult == Failed ||
           reply.zResult == Failed || reply.xHwLimit != 0 || reply.yHwLimit != 0 ||
           reply.zHwLimit != 0 || reply.xSwLimit != 0 || reply.ySwLimit != 0 || reply.zSwLimit != 0;
}

bool IsMoving(const McndReply& reply) {
    return reply.xMoving == 1 || reply.yMoving == 1 || reply.zMoving == 1;
}

/// The newest move has come to its end, unless it had before. A refused move is still watched, as
/// any accepted one, but nothing that the controller shows later is its own.
void EndNewest(MoveState state) ZB_REQUIRES(HealthLock) {
    if (moveHealth.newest == MoveState::UnderWay) {
        moveHealth.newest = state;
        ++moveHealth.ended;
    }
}

/// The controller's words behind "#", or null for a reply that is no refusal.
const char* RefusalIn(ExchangeReplyBuffer& reply) {
    char* rest = reply.data();
    NextToken(rest, '=');
    const char* const first = NextToken(rest, ',');
    const char* const second = NextToken(rest, '\r');
    return first == nullptr || first[0] != '#' ? nullptr : second == nullptr ? "" : second;
}

void StartWatch(const Watch& accepted, const std::array<std::int32_t, 3>& target,
                const char* refusal) {
    const LockHold hold(HealthLock);
    ++moveHealth.accepted;
    if (accepted.number < watch.number) {
        ++moveHealth.ended;  // Replaced before its own call could say that it was accepted.
        return;
    }
    watch = accepted;
    MoveActive.store(1);
    EndNewest(MoveState::Replaced);
    moveHealth.previous = moveHealth.newest;
    moveHealth.newest = MoveState::UnderWay;
    moveHealth.target = target;
    if (refusal != nullptr) {
        EndNewest(MoveState::Refused);
    } else if (workerState == WorkerState::Stopped || workerState == WorkerState::Ended) {
        LoseMove();
    }
    std::snprintf(moveHealth.refusal.data(), moveHealth.refusal.size(), "%s",
                  refusal != nullptr ? refusal : "");
}

Watch Watched() {
    const LockHold hold(HealthLock);
    return watch;
}

/// Ends the watch of the move with that number and gives it out. False when a newer move has taken
/// over: the condition was asked for before that one was accepted and must not end it.
bool EndWatch(std::uint64_t number, MoveState state, Watch& ended) {
    const LockHold hold(HealthLock);
    if (watch.number != number) {
        return false;
    }
    ended = watch;
    MoveActive.store(0);
    EndNewest(state);
    return true;
}

void Tell(const Watch& ended, bool error, const McndReply& reply) {
    if (ended.MoveCallback != nullptr) {
        ended.MoveCallback(true, error, &reply, ended.MoveData);
    }
}

/// Unless a newer move has taken over.
void BreakOff(std::uint64_t number) {
    Watch ended;
    if (EndWatch(number, MoveState::EndedWithError, ended)) {
        Tell(ended, true, {});
    }
}

}  // namespace

MoveHealth moveHealth;

void BreakOffMove() {
    if (MoveActive.load() != 0) {
        BreakOff(Watched().number);
    }
}

void LoseMove() {
    EndNewest(MoveState::Lost);
}

bool MoveAbsolute(double x, double y, double z, CncNotifyCallback callback, std::intptr_t data) {
    std::array<std::int32_t, 3> counts{};
    if (!ToCounts(x, counts[0]) || !ToCounts(y, counts[1]) || !ToCounts(z, counts[2])) {
        WriteLine("MOVE OUT OF RANGE\n");
        return false;
    }
    const std::uint32_t losses = LineLosses();
    if (LineIsLost()) {
        WriteLine("MOVE REFUSED, LINE LOST\n");
        return false;
    }
    char command[256] = {};
    std::snprintf(command, sizeof(command), MoveRequestFormat, static_cast<int>(counts[0]),
                  static_cast<int>(counts[1]), static_cast<int>(counts[2]));
    ExchangeReplyBuffer reply{};
    std::uint64_t number = 0;
    if (!ExchangeChecked(command, MoveReplyPrefix, reply, &number)) {
        return false;
    }
    StartWatch({callback, data, number, losses}, counts, RefusalIn(reply));
    return true;
}

void TestMove() {
    const Watch watched = Watched();
    if (watched.losses != LineLosses()) {
        BreakOff(watched.number);  // Accepted just as the line was lost.
        return;
    }
    McndReply reply;
    const bool known = MyQueryMcnd(reply);
    const bool error = HasError(reply);
    if (known ? !error && IsMoving(reply) : ReopenWanted) {
        return;
    }
    const MoveState state = !known  ? MoveState::Lost
                            : error ? MoveState::EndedWithError
                                    : MoveState::EndedWell;
    Watch ended;
    if (EndWatch(watched.number, state, ended) && known) {
        Tell(ended, error, reply);
    }
}
