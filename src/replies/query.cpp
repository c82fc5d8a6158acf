#include "replies/query.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "log/zbr_log.h"

char* NextToken(char*& rest, char delimiter) {
    while (*rest == delimiter) {
        ++rest;
    }
    if (*rest == 0) {
        return nullptr;
    }
    char* const token = rest;
    while (*rest != 0 && *rest != delimiter) {
        ++rest;
    }
    if (*rest != 0) {
        *rest++ = 0;
    }
    return token;
}

std::int32_t FieldNumber(const char* field) {
    using Limits = std::numeric_limits<std::int32_t>;
    const long long value = std::strtoll(field, nullptr, 10);
    return static_cast<std::int32_t>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

void LogFailedExchange() {
    WriteLine("BADCMD COMM ERROR\n");
}

void LogFailedReply(const ExchangeReplyBuffer& buffer) {
    WriteLine("BADCMD buf=", buffer.data(), "\n");
}
