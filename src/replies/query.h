#pragma once

#include <array>
#include <cstddef>

#include "link/protocol.h"
#include "replies/tokenizer.h"

// What all queries share: one exchange, the cut of the reply into tokens, and the ways to fail. A
// failing query marks its record, logs one line and gives false.

void LogFailedExchange();
void LogFailedReply(const ExchangeReplyBuffer& buffer);

/// Marks the record as failed for the reason given. The line shows the reply as far as its first
/// cut, which is its name. Always false.
template <typename Record>
bool FailReply(Record& record, const char* reason, const ExchangeReplyBuffer& buffer) {
    record.replyError = 1;
    record.replyErrorText = reason;
    LogFailedReply(buffer);
    return false;
}

/// Runs the exchange and cuts the reply, in the buffer, into one token per delimiter: the reply's
/// name and its fields.
template <std::size_t Count, typename Record>
bool QueryTokens(const Query& query, const std::array<char, Count>& delimiters, Record& record,
                 ExchangeReplyBuffer& buffer, std::array<char*, Count>& tokens) {
    if (!ExchangeChecked(query.request, query.prefix, buffer)) {
        record.replyError = 1;
        record.replyErrorText = "COMM ERROR";
        LogFailedExchange();
        return false;
    }
    return CutTokens(buffer.data(), delimiters, tokens) || FailReply(record, "CMD ERROR", buffer);
}

/// The controller's refusal: "#" in the first field, the reason in the second.
template <std::size_t Count, typename Record>
bool AcceptFields(const std::array<char*, Count>& tokens, Record& record,
                  const ExchangeReplyBuffer& buffer) {
    return tokens[1][0] != '#' || FailReply(record, tokens[2], buffer);
}

/// The delimiters of a list of numbers: the name ends at "=", the fields at ",", the last at
/// `last`.
template <std::size_t Count>
constexpr std::array<char, Count> ListDelimiters(char last) {
    std::array<char, Count> delimiters{};
    delimiters.fill(',');
    delimiters.front() = '=';
    delimiters.back() = last;
    return delimiters;
}
