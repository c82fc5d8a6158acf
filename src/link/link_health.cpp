#include "link/link_health.h"

#include <cstdio>
#include <cstring>

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
        case Outcome::NoReply:
            return "no reply";
        default:
            return "a reply of the wrong form";
    }
}

}  // namespace

void NoteExchange(const char* request, Outcome outcome) {
    if (outcome == Outcome::ShutOut) {
        return;
    }
    const LockHold hold(HealthLock);
    if (outcome == Outcome::Good) {
        ++linkHealth.good;
        linkHealth.failuresInRow = 0;
        linkHealth.lastGoodTick = GetTickCount64();
        return;
    }
    ++linkHealth.failed;
    ++linkHealth.failuresInRow;
    std::snprintf(linkHealth.lastFailure.data(), linkHealth.lastFailure.size(), "%.*s: %s",
                  static_cast<int>(std::strcspn(request, "\r\n")), request, Named(outcome));
}

void NoteSystemError(std::uint32_t code) {
    const LockHold hold(HealthLock);
    linkHealth.lastSystemError = code;
}
