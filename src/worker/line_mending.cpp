#include "worker/line_mending.h"

#include <algorithm>
#include <utility>

#include "homing/automatic_homing.h"
#include "homing/manual_homing.h"
#include "link/command_queue.h"
#include "link/exchange.h"
#include "link/line_gate.h"
#include "link/protocol.h"
#include "log/zbr_log.h"
#include "replies/queries.h"
#include "stage/stage_data.h"
#include "worker/moves.h"

namespace {

constexpr ULONGLONG FirstPause = 500;
constexpr ULONGLONG LongestPause = 8000;
constexpr ULONGLONG StepMilliseconds = 50;

/// The pause before the next try and its beginning; 0 until the loss has been noticed.
ULONGLONG tryPause = 0;
ULONGLONG tryPauseStart = 0;

void BeginPause(ULONGLONG milliseconds, ULONGLONG start) {
    tryPause = milliseconds;
    tryPauseStart = start;
}

void ClosePort() {
    const ComLockHold hold;
    ZbComClose();
}

/// Nothing of what was asked for before is sent late: the operator begins again, with his eyes on
/// the stage.
void BreakOff() {
    ClosePort();
    DropHomingCommands();
    BreakOffManualHoming();
    BreakOffAutoHoming();
    BreakOffMove();
}

/// Opens the port with its first exchange. What waits then is from before the loss; it is read away
/// and says nothing against the line.
bool IsMended() {
    const LineMending mending;
    std::string reply;
    const Outcome outcome = ExchangeJudged(RemoteEnableRequest, nullptr, reply, nullptr);
    return (outcome == Outcome::Good || outcome == Outcome::LateReply) && PollPosition();
}

}  // namespace

bool PollPosition() {
    CposmrReply reply;
    if (!MyQueryCposmr(reply)) {
        return false;
    }
    MergePosition(std::move(reply));
    return true;
}

bool TendLostLine() {
    const ULONGLONG now = GetTickCount64();
    if (tryPause == 0) {
        BeginPause(FirstPause, now);
        BreakOff();
    }
    const ULONGLONG elapsed = now - tryPauseStart;
    if (elapsed < tryPause) {
        Sleep(static_cast<DWORD>(std::min(tryPause - elapsed, StepMilliseconds)));
        return false;
    }
    if (!IsMended()) {
        ClosePort();
        // A try at a silent line takes seconds itself, and must not come on top of the longest
        // pause.
        BeginPause(std::min(2 * tryPause, LongestPause), now);
        return false;
    }
    tryPause = 0;
    SetLineLost(false);
    WriteLine("LINE IS BACK\n");
    return true;
}
