#include "stage/stage_data.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/ownership.h"
#include "settings/settings.h"

CRITICAL_SECTION StageDataLock;

namespace {

constinit Late<OviskData> shared;

constexpr std::int32_t SwitchActive = 1;

bool SameLamps(const LabrReply& a, const LabrReply& b) {
    return a.labr1 == b.labr1 && a.labr2 == b.labr2 && a.labr4 == b.labr4 && a.labr5 == b.labr5 &&
           a.labr6 == b.labr6 && a.labr7 == b.labr7;
}

/// A tick of 0 stands for never, so the first millisecond of a machine counts as the second.
void NoteMerge(ULONGLONG MergeTicks::*part) {
    const ULONGLONG now = std::max<ULONGLONG>(GetTickCount64(), 1);
    const LockHold hold(HealthLock);
    mergeTicks.*part = now;
}

OviskData SharedCopy() {
    const LockHold hold(StageDataLock);
    return SharedStageData;
}

}  // namespace

OviskData& SharedStageData = shared.object;
MergeTicks mergeTicks;

/// Rounds as lround does, which as a call of the C library takes a third of a snapshot's time. What
/// is added is the largest number below a half: with the half itself that number would become 1.
std::int32_t Scaled(std::int32_t counts, double scale) {
    using Limits = std::numeric_limits<std::int32_t>;
    constexpr double AlmostHalf = 0.49999999999999994;
    const double quotient = std::clamp<double>(counts / scale, Limits::min(), Limits::max());
    return static_cast<std::int32_t>(quotient + std::copysign(AlmostHalf, quotient));
}

void MakeStageData() {
    shared.Begin();
}

void ReleaseStageData() {
    shared.End();
}

void MergePosition(CposmrReply&& reply) {
    {
        const LockHold hold(StageDataLock);
        SharedStageData.cposmr = std::move(reply);
    }
    NoteMerge(&MergeTicks::position);
}

void MergeSwitches(SswcReply&& reply) {
    {
        const LockHold hold(StageDataLock);
        SswcReply& held = SharedStageData.sswc;
        for (const auto latch :
             {&SswcReply::EMER_SW, &SswcReply::SW_Y, &SswcReply::DATA_SW, &SswcReply::FOOT_SW}) {
            reply.*latch = reply.*latch == SwitchActive ? 1 : held.*latch;
        }
        held = std::move(reply);
    }
    NoteMerge(&MergeTicks::switches);
}

void MergeLamps(LabrReply&& reply) {
    {
        const LockHold hold(StageDataLock);
        LabrReply& held = SharedStageData.labr;
        reply.lampChanged = held.lampChanged == 1 || !SameLamps(reply, held) ? 1 : 0;
        held = std::move(reply);
    }
    NoteMerge(&MergeTicks::lamps);
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
