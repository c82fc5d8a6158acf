#pragma once

#include <cstdint>
#include <string>

#include "log/zbr_log.h"

/// A number in a log line: decimal, with a "-" when negative.
struct Decimal {
    std::int32_t value;
};

void WritePiece(const char* text);
void WritePiece(const std::string& text);
void WritePiece(Decimal number);

/// Writes the pieces of one log line to LogChannel, one after the other. The last piece has to
/// carry the line-feed. Any thread, under any lock; pieces of two threads' lines can mix.
template <typename... Pieces>
void WriteLine(const Pieces&... pieces) {
    (WritePiece(pieces), ...);
}
