#include "native/wide_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>

namespace posix {
namespace {

constexpr char32_t Replacement = 0xFFFD;

/// What code page 1252 has in the place of the control characters 0x80 to 0x9F.
constexpr std::array<char16_t, 32> Ansi80 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& text, char32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr std::array<unsigned, 4> Lead = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(Lead[static_cast<std::size_t>(more)] | (code >> (6 * more)));
    for (int i = more - 1; i >= 0; --i) {
        text += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
    }
}

void AppendUtf16(std::u16string& text, char32_t code) {
    if (code < 0x10000) {
        text += static_cast<char16_t>(code);
    } else {
        text += static_cast<char16_t>(0xD7C0 + (code >> 10));
        text += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
}

/// Takes one character off the front of a UTF-8 text; one byte if it is malformed.
char32_t TakeUtf8(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (lead < 0x80) {
        return lead;
    }
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < more) {
        return Replacement;
    }
    char32_t code = lead & (0x3FU >> more);
    for (std::size_t i = 0; i < more; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) {
            return Replacement;
        }
        code = (code << 6) | (next & 0x3FU);
    }
    constexpr std::array<char32_t, 4> Least = {0, 0x80, 0x800, 0x10000};
    if (code < Least[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) {
        return Replacement;
    }
    text.remove_prefix(more);
    return code;
}

bool IsDigit(WCHAR letter) {
    return letter >= '0' && letter <= '9';
}

/// The decimal number at the start of a text, as plain characters; empty if there is none.
std::string DecimalAtStart(const WCHAR* text) {
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) {
        ++text;
    }
    std::string number;
    const auto take = [&] { number += static_cast<char>(*text++); };
    const auto takeDigits = [&] {
        const WCHAR* start = text;
        while (IsDigit(*text)) {
            take();
        }
        return text != start;
    };
    if (*text == '+' || *text == '-') {
        take();
    }
    bool digits = takeDigits();
    if (*text == '.') {
        take();
        digits = takeDigits() || digits;
    }
    if (!digits) {
        return {};
    }
    const std::size_t withoutExponent = number.size();
    if (*text == 'e' || *text == 'E') {
        take();
        if (*text == '+' || *text == '-') {
            take();
        }
        if (!takeDigits()) {
            number.resize(withoutExponent);
        }
    }
    return number;
}

/// strtod of the "C" locale, whatever locale the host has set; errno stays as it was.
double ToDouble(const std::string& number) {
    const int before = errno;
    const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    const double value = strtod_l(number.c_str(), nullptr, plain);
    freelocale(plain);
    errno = before;
    return value;
}

}  // namespace

std::string ToUtf8(std::u16string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code = text[i];
        if (code >= 0xD800 && code < 0xE000) {
            const bool pair = code < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                              text[i + 1] < 0xE000;
            code = pair ? 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00U) : Replacement;
        }
        AppendUtf8(result, code);
    }
    return result;
}

std::u16string FromUtf8(std::string_view text) {
    std::u16string result;
    while (!text.empty()) {
        AppendUtf16(result, TakeUtf8(text));
    }
    return result;
}

std::u16string FromAnsi(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        result += byte >= 0x80 && byte < 0xA0 ? Ansi80[byte - 0x80U] : char16_t{byte};
    }
    return result;
}

std::string ToAnsi(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char16_t letter : text) {
        const auto* found = std::find(Ansi80.begin(), Ansi80.end(), letter);
        if (found != Ansi80.end()) {
            result += static_cast<char>(0x80 + (found - Ansi80.begin()));
        } else {
            const bool same = letter < 0x80 || (letter >= 0xA0 && letter <= 0xFF);
            result += same ? static_cast<char>(letter) : '?';
        }
    }
    return result;
}

}  // namespace posix

errno_t _ltow_s(LONG value, WCHAR* buffer, std::size_t size, int radix) {
    if (buffer == nullptr || size == 0) {
        return EINVAL;
    }
    buffer[0] = 0;
    if (radix != 10) {
        return EINVAL;
    }
    const std::string digits = std::to_string(value);
    if (digits.size() >= size) {
        return ERANGE;
    }
    for (std::size_t i = 0; i <= digits.size(); ++i) {
        buffer[i] = static_cast<WCHAR>(digits.c_str()[i]);
    }
    return 0;
}

errno_t _itow_s(int value, WCHAR* buffer, std::size_t size, int radix) {
    return _ltow_s(value, buffer, size, radix);
}

double _wtof(const WCHAR* text) {
    const std::string number = posix::DecimalAtStart(text);
    return number.empty() ? 0.0 : posix::ToDouble(number);
}
