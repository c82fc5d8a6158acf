#include "link/protocol.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "log/zbr_log.h"
#include "settings/settings.h"

namespace {

/// No second ">" and no line-feed but the last.
bool IsOneReply(const std::string& reply) {
    return reply.find_first_of(">\n", 1) == reply.size() - 1;
}

}  // namespace

bool HasReplyForm(const std::string& reply, const char* prefix) {
    constexpr std::size_t Longest = sizeof(ExchangeReplyBuffer) - 1;
    return reply.size() <= Longest && reply.size() > std::strlen(prefix) + 2 &&
           reply.starts_with(prefix) && reply.ends_with("\r\n") &&
           (!StrictRepliesWanted || IsOneReply(reply));
}

bool ExchangeChecked(const char* command, const char* prefix, ExchangeReplyBuffer& replyBuffer,
                     std::uint64_t* number) {
    std::string reply;
    const DWORD start = SerialLogEnabled.load() != 0 ? GetTickCount() : 0;
    const Outcome outcome = ExchangeJudged(command, prefix, reply, number);
    if (outcome != Outcome::Good && outcome != Outcome::WrongReply &&
        outcome != Outcome::LateReply) {
        WriteLine("BADCMD2 send=", command, "\n");
        return false;
    }
    const std::size_t kept = std::min(reply.size(), replyBuffer.size() - 1);
    std::memcpy(replyBuffer.data(), reply.data(), kept);
    replyBuffer[kept] = 0;
    if (outcome != Outcome::Good) {
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
