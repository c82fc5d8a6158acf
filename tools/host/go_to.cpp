#include "host/go_to.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/interrupt.h"
#include "host/text.h"

namespace host_tool {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// Written so that a value that is no number is out of range too.
bool IsInRange(double target) {
    return std::abs(target) * 1e6 <= 2147483648.0;
}

ExitStatus TellNotAccepted(const MoveTarget& target, const ZbOviskHealth& health) {
    if (!IsInRange(target.x) || !IsInRange(target.y) || !IsInRange(target.z)) {
        std::printf("the target is out of range: nothing was sent\n");
        return Refused;
    }
    std::printf("no answer to the move, so the stage may move all the same: %s\n",
                health.lastFailure);
    return EndUnknown;
}

/// What became of the move with that number, which may be the newest no more.
std::int32_t StateOf(std::uint64_t number, const ZbOviskHealth& health) {
    if (health.movesAccepted == number) {
        return health.move;
    }
    return health.movesAccepted == number + 1 ? health.previousMove : ZBOVISK_MOVE_REPLACED;
}

bool IsAtTarget(const ZbOviskStage& stage, const std::int32_t (&target)[3]) {
    constexpr std::int64_t Tolerance = 100;
    const auto isAt = [](bool error, std::int64_t counts, std::int64_t wanted) {
        return !error && std::abs(counts - wanted) <= Tolerance;
    };
    return isAt(stage.xError, stage.xCounts, target[0]) &&
           isAt(stage.yError, stage.yCounts, target[1]) &&
           isAt(stage.zError, stage.zCounts, target[2]);
}

/// Waits for a position that was read after now. False when none comes for longer than a silent
/// controller is waited for.
bool AwaitNewPosition(ModuleLibrary& module) {
    const auto start = Clock::now();
    const auto passed = [start] { return Clock::now() - start; };
    while (passed() < 6s && !Interrupted()) {
        Pause(50ms);
        const std::uint64_t age = module.Health().positionAge;
        if (age != ZBOVISK_NEVER && std::chrono::milliseconds(age) < passed()) {
            return true;
        }
    }
    return false;
}

ExitStatus TellArrival(ModuleLibrary& module) {
    if (!AwaitNewPosition(module)) {
        std::printf("the move ended well, but no position has come since: %s\n",
                    module.Health().lastFailure);
        return EndUnknown;
    }
    const ZbOviskStage stage = module.Stage();
    if (!IsAtTarget(stage, module.Health().moveTarget)) {
        std::printf("the move ended well, but not at its target: %s\n",
                    PositionText(stage).c_str());
        return MoveFailed;
    }
    std::printf("arrived: %s\n", PositionText(stage).c_str());
    return Done;
}

ExitStatus TellNotEnded(const MoveTarget& target) {
    if (Interrupted()) {
        std::printf("interrupted; the move goes on\n");
    } else {
        std::printf("the move did not end within %lld s\n",
                    static_cast<long long>(target.limit.count()));
    }
    return EndUnknown;
}

ExitStatus TellEnd(ModuleLibrary& module, const MoveTarget& target, std::uint64_t number) {
    const ZbOviskHealth health = module.Health();
    switch (StateOf(number, health)) {
        case ZBOVISK_MOVE_ENDED_WELL:
            return TellArrival(module);
        case ZBOVISK_MOVE_ENDED_WITH_ERROR:
            std::printf("the move ended with an error at %s\n",
                        PositionText(module.Stage()).c_str());
            return MoveFailed;
        case ZBOVISK_MOVE_REFUSED:
            std::printf("the controller refused the move: %s\n", health.moveText);
            return Refused;
        case ZBOVISK_MOVE_REPLACED:
            std::printf("a newer move has replaced this one\n");
            return EndUnknown;
        case ZBOVISK_MOVE_LOST:
            std::printf("how the move ended could not be read: %s\n", health.lastFailure);
            return EndUnknown;
        default:
            return TellNotEnded(target);
    }
}

}  // namespace

ExitStatus GoTo(ModuleLibrary& module, const MoveTarget& target) {
    if (!module.ZbOvisk_CncGotoAbsoluteNotifyWorld(target.x, target.y, target.z, nullptr, 0)) {
        return TellNotAccepted(target, module.Health());
    }
    const std::uint64_t number = module.Health().movesAccepted;
    const auto end = Clock::now() + target.limit;
    while (StateOf(number, module.Health()) == ZBOVISK_MOVE_UNDER_WAY && Clock::now() < end &&
           !Interrupted()) {
        std::printf("%s\n", PositionText(module.Stage()).c_str());
        std::fflush(stdout);
        Pause(200ms);
    }
    return TellEnd(module, target, number);
}

}  // namespace host_tool
