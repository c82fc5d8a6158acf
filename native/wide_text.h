#pragma once

#include <string>
#include <string_view>

#include "platform/win32.h"

/// Text between UTF-16, UTF-8 and the ANSI code page (1252). What is malformed becomes U+FFFD.
namespace posix {

std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);
std::u16string FromAnsi(std::string_view text);

/// With "?" for what the code page does not have.
std::string ToAnsi(std::u16string_view text);

/// A to Z as small letters, everything else as it is.
template <typename Character>
constexpr Character Folded(Character letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<Character>(letter + ('a' - 'A')) : letter;
}

/// Equality without regard to the case of A to Z.
template <typename Text>
bool SameFolded(const Text& left, const Text& right) {
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (Folded(left[i]) != Folded(right[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace posix
