#include "worker/status_poll.h"

#include <utility>

#include "replies/queries.h"
#include "stage/stage_data.h"
#include "worker/moves.h"
#include "worker/period.h"

namespace {

constinit Period statusPoll(500);

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
    if (!statusPoll.HasPassed()) {
        return;
    }
    PollSwitches();
    PollLamps();
    if (MoveActive.load() != 0) {
        TestMove();
    }
}
