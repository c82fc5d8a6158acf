#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Cuts the next token out of a text, in place, as strtok does with a one-character set: leading
/// delimiters are skipped, the delimiter behind the token becomes its end. `rest` is the caller's
/// position and moves behind the token. Null when nothing is left.
char* NextToken(char*& rest, char delimiter);

/// Cuts one token per delimiter. False when one of them is missing.
template <std::size_t Count>
bool CutTokens(char* text, const std::array<char, Count>& delimiters,
               std::array<char*, Count>& tokens) {
    for (std::size_t i = 0; i < Count; ++i) {
        tokens[i] = NextToken(text, delimiters[i]);
        if (tokens[i] == nullptr) {
            return false;
        }
    }
    return true;
}

/// A field's number as atol reads it: white space, sign, digits, 0 without digits. A number beyond
/// 32 bits becomes the nearest one that fits.
std::int32_t FieldNumber(const char* field);
