#include "replies/query.h"

#include "log/log_line.h"

void LogFailedExchange() {
    WriteLine("BADCMD COMM ERROR\n");
}

void LogFailedReply(const ExchangeReplyBuffer& buffer) {
    WriteLine("BADCMD buf=", buffer.data(), "\n");
}
