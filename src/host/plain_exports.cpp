#include <algorithm>
#include <cstring>
#include <string>

#include "homing/automatic_homing.h"
#include "homing/manual_homing.h"
#include "host/start_stop.h"
#include "host/zb_ovisk_plain.h"
#include "link/line_gate.h"
#include "settings/settings.h"
#include "stage/stage_data.h"
#include "worker/moves.h"
#include "worker/worker_thread.h"

namespace {

template <std::size_t Size>
void Copy(const std::string& text, char (&array)[Size]) {
    array[text.copy(array, Size - 1)] = 0;
}

template <std::size_t Size>
void Copy(const std::array<char, Size>& text, char (&array)[Size]) {
    // The compiler makes a loop over bytes of a copy by iterators: half of a reading's time.
    std::memcpy(array, text.data(), Size);
}

void CopySwitches(const SswcReply& sswc, std::int32_t* switches) {
    for (const std::int32_t value :
         {sswc.EMER_SW, sswc.sswc2, sswc.SW_Y, sswc.sswc4, sswc.DATA_SW, sswc.sswc6, sswc.sswc7,
          sswc.sswc8, sswc.sswc9, sswc.sswc10, sswc.sswc11, sswc.FOOT_SW, sswc.MEAS_MODE,
          sswc.sswc14, sswc.sswc15, sswc.sswc16}) {
        *switches++ = value;
    }
}

void CopyLamps(const LabrReply& labr, std::int32_t* lamps) {
    for (const std::int32_t value :
         {labr.labr1, labr.labr2, 0, labr.labr4, labr.labr5, labr.labr6, labr.labr7}) {
        *lamps++ = value;
    }
}

void CopyStage(const OviskData& data, ZbOviskStage& stage) {
    stage.xCounts = data.cposmr.x;
    stage.yCounts = data.cposmr.y;
    stage.zCounts = data.cposmr.z;
    stage.xError = data.cposmr.xError != 0;
    stage.yError = data.cposmr.yError != 0;
    stage.zError = data.cposmr.zError != 0;
    Copy(data.cposmr.xErrorText, stage.xErrorText);
    Copy(data.cposmr.yErrorText, stage.yErrorText);
    Copy(data.cposmr.zErrorText, stage.zErrorText);
    stage.lampChanged = data.labr.lampChanged != 0;
    CopySwitches(data.sswc, stage.switches);
    CopyLamps(data.labr, stage.lamps);
}

std::uint64_t Age(ULONGLONG now, ULONGLONG tick, bool hasBeen) {
    return hasBeen ? now - std::min(tick, now) : ZBOVISK_NEVER;
}

void CopyLink(ULONGLONG now, ZbOviskHealth& health) ZB_REQUIRES(HealthLock) {
    const bool hasAnswered = linkHealth.good != 0;
    health.link = LineIsLost()                    ? ZBOVISK_LINK_LOST
                  : !hasAnswered                  ? ZBOVISK_LINK_NEVER_ANSWERED
                  : linkHealth.failuresInRow == 0 ? ZBOVISK_LINK_ANSWERS
                                                  : ZBOVISK_LINK_FAILS;
    health.failuresInRow = linkHealth.failuresInRow;
    health.linkLosses = linkHealth.losses;
    health.lastSystemError = linkHealth.lastSystemError;
    health.exchangesGood = linkHealth.good;
    health.exchangesFailed = linkHealth.failed;
    health.millisecondsSinceGood = Age(now, linkHealth.lastGoodTick, hasAnswered);
    Copy(linkHealth.lastFailure, health.lastFailure);
    health.positionAge = Age(now, mergeTicks.position, mergeTicks.position != 0);
    health.switchesAge = Age(now, mergeTicks.switches, mergeTicks.switches != 0);
    health.lampsAge = Age(now, mergeTicks.lamps, mergeTicks.lamps != 0);
}

void CopyMoves(ZbOviskHealth& health) ZB_REQUIRES(HealthLock) {
    health.movesAccepted = moveHealth.accepted;
    health.movesEnded = moveHealth.ended;
    health.move = static_cast<std::int32_t>(moveHealth.newest);
    health.previousMove = static_cast<std::int32_t>(moveHealth.previous);
    std::ranges::copy(moveHealth.target, health.moveTarget);
    Copy(moveHealth.refusal, health.moveText);
}

void CopyHoming(ZbOviskHealth& health) ZB_REQUIRES(HealthLock) {
    const bool byHand = ManualHomingRuns();
    health.homing = byHand             ? ZBOVISK_HOMING_BY_HAND
                    : AutoHomingRuns() ? ZBOVISK_HOMING_AUTOMATIC
                                       : ZBOVISK_HOMING_NONE;
    health.homingAxis = byHand ? ManualHomingAxis() : AutoHomingAxis();
    health.lastHoming = static_cast<std::int32_t>(lastHomingEnd);
}

}  // namespace

bool ZbOvisk_ReadStage(ZbOviskStage* stage) {
    if (stage == nullptr || stage->size != sizeof *stage) {
        return false;
    }
    const double scale = ScaleFactor.load();
    LookAtStageData([stage](const OviskData& data) { CopyStage(data, *stage); });
    stage->x = Scaled(stage->xCounts, scale);
    stage->y = Scaled(stage->yCounts, scale);
    stage->z = Scaled(stage->zCounts, scale);
    return true;
}

bool ZbOvisk_ReadHealth(ZbOviskHealth* health) {
    if (health == nullptr || health->size != sizeof *health) {
        return false;
    }
    const std::int32_t port = CurrentPortSettings().Port;
    const LockHold hold(HealthLock);
    const ULONGLONG now = GetTickCount64();
    health->version = OVISK_VERSION;
    health->worker = static_cast<std::int32_t>(workerState);
    health->homingMode = AutoHomingMode.load();
    health->scaleFactor = ScaleFactor.load();
    health->port = port;
    CopyLink(now, *health);
    CopyMoves(*health);
    CopyHoming(*health);
    return true;
}
