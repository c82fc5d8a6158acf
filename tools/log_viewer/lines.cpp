#include "log_viewer/lines.h"

#include <cstdint>
#include <cstdio>

namespace log_viewer {

namespace {

bool IsHighHalf(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowHalf(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf8(std::string& out, std::uint32_t point) {
    const auto tail = [&](unsigned shift) {
        out += static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
    };
    if (point < 0x80) {
        out += static_cast<char>(point);
    } else if (point < 0x800) {
        out += static_cast<char>(0xC0U | (point >> 6));
        tail(0);
    } else if (point < 0x10000) {
        out += static_cast<char>(0xE0U | (point >> 12));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0U | (point >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

void AppendNumber(std::string& out, const char* format, unsigned number) {
    char text[8];
    std::snprintf(text, sizeof(text), format, number);
    out += text;
}

/// The letter that stands for a character behind a backslash, 0 if it has none.
char EscapeLetter(char16_t unit) {
    switch (unit) {
        case u'\\':
            return '\\';
        case u'\r':
            return 'r';
        case u'\t':
            return 't';
        case u'\0':
            return '0';
        default:
            return 0;
    }
}

void AppendUnit(std::string& out, char16_t unit) {
    if (const char letter = EscapeLetter(unit)) {
        out += {'\\', letter};
    } else if ((unit < 0x20 && unit != u'\n') || (unit >= 0x7F && unit < 0xA0)) {
        AppendNumber(out, "\\x%02X", unit);
    } else if (IsHighHalf(unit) || IsLowHalf(unit)) {
        AppendNumber(out, "\\u%04X", unit);
    } else {
        AppendUtf8(out, unit);
    }
}

}  // namespace

std::string Escape(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i + 1 < text.size() && IsHighHalf(text[i]) && IsLowHalf(text[i + 1])) {
            const std::uint32_t high = text[i] - 0xD800U;
            const std::uint32_t low = text[++i] - 0xDC00U;
            AppendUtf8(out, 0x10000U + (high << 10) + low);
        } else {
            AppendUnit(out, text[i]);
        }
    }
    return out;
}

std::vector<Fragment> SplitLines(std::u16string_view text) {
    std::vector<Fragment> fragments;
    while (!text.empty()) {
        const std::size_t end = text.find(u'\n');
        const bool endsLine = end != text.npos;
        fragments.push_back({.text = Escape(text.substr(0, end)), .endsLine = endsLine});
        text.remove_prefix(endsLine ? end + 1 : text.size());
    }
    return fragments;
}

}  // namespace log_viewer
