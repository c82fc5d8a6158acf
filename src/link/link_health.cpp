#include "link/link_health.h"

#include <cstdio>
#include <cstring>

#include "link/line_gate.h"
#include "log/zbr_log.h"
#include "settings/settings.h"

CRITICAL_SECTION HealthLock;
LinkHealth linkHealth;

namespace {

const char* Named(Outcome outcome) {
    switch (outcome) {
        case Outcome::BadPort:
            return "the port's number is negative";
        case Outcome::NotOpened:
            return "the port could not be opened";
        case Outcome::NotWritten:
            return "the request could not be written";
        case Outcome::NotRead:
            return "the reply could not be read";
        case Outcome::NoReply:
            return "no reply";
        case Outcome::LateReply:
            return "a late reply was waiting";
        default:
            return "a reply of the wrong form";
    }
}

constexpr std::uint32_t FailuresToLose = 3;

void NoteGood() ZB_REQUIRES(HealthLock) {
    ++linkHealth.good;
    linkHealth.failuresInRow = 0;
    linkHealth.lastGoodTick = GetTickCount64();
}

void NoteFailure(const char* request, Outcome outcome) ZB_REQUIRES(HealthLock) {
    ++linkHealth.failed;
    ++linkHealth.failuresInRow;
    std::snprintf(linkHealth.lastFailure.data(), linkHealth.lastFailure.size(), "%.*s: %s",
                  static_cast<int>(std::strcspn(request, "\r\n")), request, Named(outcome));
}

/// True when the line is lost by this failure.
bool LoseLine(Outcome outcome) ZB_REQUIRES(HealthLock) {
    const bool broke = outcome == Outcome::NotWritten || outcome == Outcome::NotRead;
    if (!ReopenWanted || LineIsLost() || (!broke && linkHealth.failuresInRow < FailuresToLose)) {
        return false;
    }
    ++linkHealth.losses;
    SetLineLost(true);
    return true;
}

}  // namespace

void NoteExchange(const char* request, Outcome outcome) {
    if (outcome == Outcome::ShutOut) {
        return;
    }
    bool isLost = false;
    {
        const LockHold hold(HealthLock);
        if (outcome == Outcome::Good) {
            NoteGood();
        } else {
            NoteFailure(request, outcome);
            isLost = LoseLine(outcome);
        }
    }
    if (isLost) {
        WriteLine("LINE LOST\n");
    }
}

std::uint32_t LineLosses() {
    const LockHold hold(HealthLock);
    return linkHealth.losses;
}

void NoteSystemError(std::uint32_t code) {
    const LockHold hold(HealthLock);
    linkHealth.lastSystemError = code;
}
