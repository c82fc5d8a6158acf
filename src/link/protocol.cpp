#include "link/protocol.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "log/zbr_log.h"
#include "settings/settings.h"

namespace {

/// Whether the text is ">", the rest of the prefix, at least one byte, CR and LF.
bool HasReplyForm(const char* text, const char* prefix) {
    const std::size_t prefixLength = std::strlen(prefix);
    const std::size_t length = std::strlen(text);
    return length > prefixLength + 2 && text[0] == '>' &&
           std::strncmp(text, prefix, prefixLength) == 0 && text[length - 2] == '\r' &&
           text[length - 1] == '\n';
}

}  // namespace

bool ExchangeChecked(const char* command, const char* prefix, ExchangeReplyBuffer& replyBuffer,
                     std::uint64_t* number) {
    std::string reply;
    const DWORD start = SerialLogEnabled.load() != 0 ? GetTickCount() : 0;
    const Outcome outcome = ExchangeUnjudged(command, reply, number);
    if (outcome != Outcome::Good) {
        NoteExchange(command, outcome);
        WriteLine("BADCMD2 send=", command, "\n");
        return false;
    }
    const std::size_t kept = std::min(reply.size(), replyBuffer.size() - 1);
    std::memcpy(replyBuffer.data(), reply.data(), kept);
    replyBuffer[kept] = 0;
    const bool isGood = kept == reply.size() && HasReplyForm(replyBuffer.data(), prefix);
    NoteExchange(command, isGood ? Outcome::Good : Outcome::WrongReply);
    if (!isGood) {
        WriteLine("BADCMD1 send=", command, " receive=", reply, "\n");
        return false;
    }
    if (SerialLogEnabled.load() != 0) {
        const DWORD elapsed = GetTickCount() - start;
        WriteLine("GOODCMD send=", command, " receive=", reply,
                  " dt=", Decimal{static_cast<std::int32_t>(elapsed)}, "\n");
    }
    return true;
}
