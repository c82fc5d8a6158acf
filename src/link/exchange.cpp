#include "link/exchange.h"

#include <algorithm>

#include "link/line_gate.h"
#include "link/protocol.h"
#include "log/zbr_log.h"
#include "settings/settings.h"

namespace {

/// When an exchange last failed to open the port or to write; 0 when none has.
ULONGLONG LastFailureTick ZB_GUARDED_BY(ComLock) = 0;

std::uint64_t exchangeCount ZB_GUARDED_BY(ComLock) = 0;

/// How the newest exchange went.
Outcome lastOutcome ZB_GUARDED_BY(ComLock) = Outcome::Good;

bool EndAs(Outcome outcome) ZB_REQUIRES(ComLock) {
    lastOutcome = outcome;
    return outcome == Outcome::Good;
}

}  // namespace

bool ZbComOpenWriteRead(const std::string& command, std::string& reply, bool logEnabled) {
    if (!MayUseLine()) {
        if (LineIsLost()) {
            WriteLine("ZbComOpenWriteRead LINE LOST\n");
        }
        return EndAs(Outcome::ShutOut);
    }
    if (CurrentPortSettings().Port < 0) {
        WriteLine("ZbComOpenWriteRead BAD PORT\n");
        return EndAs(Outcome::BadPort);
    }
    if (ZbComOpen() == 0) {
        WriteLine("ZbComOpenWriteRead ERROR\n");
        LastFailureTick = GetTickCount64();
        return EndAs(Outcome::NotOpened);
    }
    const auto pause = static_cast<DWORD>(std::max(Delay, 0));
    const ULONGLONG elapsed = GetTickCount64() - LastFailureTick;
    if (elapsed < pause) {
        Sleep(pause - static_cast<DWORD>(elapsed));
    }
    const bool isLate = StrictRepliesWanted && ZbComDropLateReply();
    if (!ZbComWrite(command, logEnabled)) {
        LastFailureTick = GetTickCount64();
        return EndAs(MayUseLine() ? Outcome::NotWritten : Outcome::ShutOut);
    }
    Sleep(pause);
    if (!ZbComRead(reply, logEnabled)) {
        WriteLine("ZbComOpenWriteRead read failure\n");
        return EndAs(ReadBroke ? Outcome::NotRead : Outcome::NoReply);
    }
    if (logEnabled) {
        WriteLine("Reply: ", reply, "\n");
    }
    return EndAs(isLate ? Outcome::LateReply : Outcome::Good);
}

Outcome ExchangeJudged(const char* command, const char* prefix, std::string& reply,
                       std::uint64_t* number) {
    const std::string text(command);
    const bool logEnabled = SerialLogEnabled.load() != 0;
    const ComLockHold hold;
    ++exchangeCount;
    if (number != nullptr) {
        *number = exchangeCount;
    }
    if (ZbComOpenWriteRead(text, reply, logEnabled) && prefix != nullptr &&
        !HasReplyForm(reply, prefix)) {
        lastOutcome = Outcome::WrongReply;
    }
    NoteExchange(command, lastOutcome);
    return lastOutcome;
}

bool ExchangeLocked(const char* command, std::string& reply) {
    return ExchangeJudged(command, nullptr, reply, nullptr) == Outcome::Good;
}

int MyRemoteEnable() {
    std::string reply;
    ExchangeLocked(RemoteEnableRequest, reply);
    return 1;
}
