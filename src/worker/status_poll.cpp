#include "worker/status_poll.h"

#include <utility>

#include "platform/win32.h"
#include "replies/switches_and_lamps.h"
#include "stage/stage_data.h"
#include "worker/moves.h"

namespace {

constexpr ULONGLONG StatusPollMilliseconds = 500;

void PollSwitches() {
    SswcReply reply;
    if (MyQuerySswc(reply)) {
        MergeSwitches(std::move(reply));
    }
}

void PollLamps() {
    LabrReply reply;
    if (MyQueryLabr(reply)) {
        MergeLamps(std::move(reply));
    }
}

}  // namespace

void MyPollStep() {
    const ULONGLONG now = GetTickCount64();
    static ULONGLONG LastStatusPollTick = now;
    if (now - LastStatusPollTick <= StatusPollMilliseconds) {
        return;
    }
    LastStatusPollTick = now;
    PollSwitches();
    PollLamps();
    if (MoveActive.load() != 0) {
        TestMove();
    }
}
