#pragma once

#include "link/link_health.h"
#include "platform/lock_hold.h"
#include "stage/ovisk_data.h"

/// Guards SharedStageData. Held for one assignment or comparison, never across an exchange.
extern CRITICAL_SECTION StageDataLock;

/// The module's one instance, with the positions in counts. The worker writes it through the merges
/// below; any thread of the host reads it.
extern OviskData& SharedStageData ZB_GUARDED_BY(StageDataLock);

/// Merges of good replies, on the worker. Each gives the record's texts away and can't fail.
void MergePosition(CposmrReply&& reply) ZB_EXCLUDES(StageDataLock);
/// A switch that reads exactly 1 sets its latch; any other value leaves the latch alone.
void MergeSwitches(SswcReply&& reply) ZB_EXCLUDES(StageDataLock);
/// Any difference in the six values sets `lampChanged`.
void MergeLamps(LabrReply&& reply) ZB_EXCLUDES(StageDataLock);

/// Copies the shared record into `data`, with the positions divided by `ScaleFactor`, rounded to
/// the nearest integer with halves away from zero, and held to 32 bits. Never waits for the line.
/// Throws only std::bad_alloc.
void CopyStageData(OviskData& data) ZB_EXCLUDES(StageDataLock);

/// Lets `read` look at the shared record, with the lock held: it copies what it wants and returns.
template <typename Read>
void LookAtStageData(const Read& read) {
    const LockHold hold(StageDataLock);
    read(SharedStageData);
}

/// Counts in the host's unit: divided by `scale`, rounded, held to 32 bits.
std::int32_t Scaled(std::int32_t counts, double scale);

/// When each part of the record was merged last; 0: never.
struct MergeTicks {
    ULONGLONG position = 0;
    ULONGLONG switches = 0;
    ULONGLONG lamps = 0;
};
extern MergeTicks mergeTicks ZB_GUARDED_BY(HealthLock);

/// The latches at one moment.
struct Latches {
    bool anySwitch;
    bool emergency;
    bool lampChanged;
};

/// Reads all latches and clears them in one step: a latch that the worker sets is told now or at
/// the next call, never lost.
Latches TakeLatches() ZB_EXCLUDES(StageDataLock);

/// Life of the shared record: made before anything else runs, released as the module's last acts.
void MakeStageData() ZB_NO_THREAD_SAFETY_ANALYSIS;
void ReleaseStageData() ZB_NO_THREAD_SAFETY_ANALYSIS;
