#include "stage/stage_data.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "settings/settings.h"

CRITICAL_SECTION StageDataLock;

namespace {

/// Storage without a life of its own: the record's construction and teardown have their place in
/// the module's start and end.
union StageDataStorage {
    constexpr StageDataStorage() : empty() {}
    ~StageDataStorage() {}
    char empty;
    OviskData data;
};

constinit StageDataStorage storage;

constexpr std::int32_t SwitchActive = 1;

std::int32_t Latched(std::int32_t reported, std::int32_t held) {
    return reported == SwitchActive ? 1 : held;
}

bool SameLamps(const LabrReply& a, const LabrReply& b) {
    return a.labr1 == b.labr1 && a.labr2 == b.labr2 && a.labr4 == b.labr4 && a.labr5 == b.labr5 &&
           a.labr6 == b.labr6 && a.labr7 == b.labr7;
}

OviskData SharedCopy() {
    const LockHold hold(StageDataLock);
    return SharedStageData;
}

/// As lround rounds, which would be a call of the C library, three times in each snapshot. What is
/// added is the largest number below a half: with the half itself that number would become 1.
inline std::int32_t Scaled(std::int32_t counts, double scale) {
    using Limits = std::numeric_limits<std::int32_t>;
    constexpr double AlmostHalf = 0.49999999999999994;
    const double quotient =
        std::clamp<double>(static_cast<double>(counts) / scale, Limits::min(), Limits::max());
    return static_cast<std::int32_t>(quotient + std::copysign(AlmostHalf, quotient));
}

}  // namespace

OviskData& SharedStageData = storage.data;

void MakeStageData() {
    std::construct_at(&storage.data);
}

void ReleaseStageData() {
    std::destroy_at(&storage.data);
}

void MergePosition(CposmrReply&& reply) {
    const LockHold hold(StageDataLock);
    SharedStageData.cposmr = std::move(reply);
}

void MergeSwitches(SswcReply&& reply) {
    const LockHold hold(StageDataLock);
    SswcReply& shared = SharedStageData.sswc;
    reply.EMER_SW = Latched(reply.EMER_SW, shared.EMER_SW);
    reply.SW_Y = Latched(reply.SW_Y, shared.SW_Y);
    reply.DATA_SW = Latched(reply.DATA_SW, shared.DATA_SW);
    reply.FOOT_SW = Latched(reply.FOOT_SW, shared.FOOT_SW);
    shared = std::move(reply);
}

void MergeLamps(LabrReply&& reply) {
    const LockHold hold(StageDataLock);
    LabrReply& shared = SharedStageData.labr;
    reply.lampChanged = shared.lampChanged == 1 || !SameLamps(reply, shared) ? 1 : 0;
    shared = std::move(reply);
}

void CopyStageData(OviskData& data) {
    const double scale = ScaleFactor.load();
    OviskData copy = SharedCopy();
    // Before the texts are moved: the divisions are the longest part, and overlap with that.
    const std::int32_t x = Scaled(copy.cposmr.x, scale);
    const std::int32_t y = Scaled(copy.cposmr.y, scale);
    const std::int32_t z = Scaled(copy.cposmr.z, scale);
    data = std::move(copy);
    data.cposmr.x = x;
    data.cposmr.y = y;
    data.cposmr.z = z;
}

Latches TakeLatches() {
    const LockHold hold(StageDataLock);
    SswcReply& switches = SharedStageData.sswc;
    const Latches latches{
        .anySwitch = switches.EMER_SW == 1 || switches.SW_Y == 1 || switches.DATA_SW == 1 ||
                     switches.FOOT_SW == 1,
        .emergency = switches.EMER_SW == 1,
        .lampChanged = SharedStageData.labr.lampChanged != 0,
    };
    switches.EMER_SW = switches.SW_Y = switches.DATA_SW = switches.FOOT_SW = 0;
    SharedStageData.labr.lampChanged = 0;
    return latches;
}
