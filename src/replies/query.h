#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "link/protocol.h"

// What all queries share: one exchange, the cut of the reply into tokens, and the ways to fail. A
// failing query marks its record, logs one line and gives false.

/// Cuts the next token out of a text, in place, as strtok does with a one-character set: leading
/// delimiters are skipped, the delimiter behind the token becomes its end. `rest` is the caller's
/// position and moves behind the token. Null when nothing is left.
char* NextToken(char*& rest, char delimiter);

/// A field's number as atol reads it: white space, sign, digits, 0 without digits. A number beyond
/// 32 bits becomes the nearest one that fits.
std::int32_t FieldNumber(const char* field);

void LogFailedExchange();
/// The line shows the reply as far as its first cut, which is its name.
void LogFailedReply(const ExchangeReplyBuffer& buffer);

/// A reply's tokens: its name and its fields.
template <std::size_t Fields>
using Tokens = std::array<char*, Fields + 1>;

/// Cuts a reply in its place: the name ends at "=", each field at ",", but the last at `lastEnd`.
/// False when a token is missing.
template <std::size_t Fields>
bool CutTokens(char* text, char lastEnd, Tokens<Fields>& tokens) {
    for (std::size_t i = 0; i <= Fields; ++i) {
        tokens[i] = NextToken(text, i == 0 ? '=' : i == Fields ? lastEnd : ',');
        if (tokens[i] == nullptr) {
            return false;
        }
    }
    return true;
}

/// Asks, and cuts the reply in the buffer. True unless a token is missing or the controller
/// refuses, with "#" in the first field and the reason in the second. `see` gets the tokens of a
/// whole reply before the refusal is looked at.
template <std::size_t Fields, typename Record, typename See>
bool QueryTokens(const Query& query, char lastEnd, Record& record, ExchangeReplyBuffer& buffer,
                 Tokens<Fields>& tokens, const See& see) {
    const auto fail = [&](const char* reason) {
        record.replyError = 1;
        record.replyErrorText = reason;
    };
    if (!ExchangeChecked(query.request, query.prefix, buffer)) {
        fail("COMM ERROR");
        LogFailedExchange();
        return false;
    }
    if (!CutTokens<Fields>(buffer.data(), lastEnd, tokens)) {
        fail("CMD ERROR");
        LogFailedReply(buffer);
        return false;
    }
    see(tokens);
    if (tokens[1][0] == '#') {
        fail(tokens[2]);
        LogFailedReply(buffer);
        return false;
    }
    record.replyError = 0;
    return true;
}

template <std::size_t Fields, typename Record>
bool QueryTokens(const Query& query, char lastEnd, Record& record, ExchangeReplyBuffer& buffer,
                 Tokens<Fields>& tokens) {
    return QueryTokens<Fields>(query, lastEnd, record, buffer, tokens, [](const auto&) {});
}
