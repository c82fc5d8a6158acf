#include "simulator/trace_text.h"

#include <algorithm>
#include <charconv>

namespace simulator {

namespace {

using std::chrono::hours;

std::vector<std::string_view> SplitLines(std::string_view file) {
    std::vector<std::string_view> lines;
    while (!file.empty()) {
        const std::size_t end = std::min(file.find('\n'), file.size());
        lines.push_back(file.substr(0, end));
        file.remove_prefix(std::min(end + 1, file.size()));
    }
    return lines;
}

/// A file whose every line ends in CR LF got these line ends on its way.
void TakeOffForeignLineEnds(std::vector<std::string_view>& lines) {
    const auto endsInReturn = [](std::string_view line) { return line.ends_with('\r'); };
    // The last line may have been cut off.
    if (lines.size() > 1 && std::all_of(lines.begin(), lines.end() - 1, endsInReturn)) {
        for (std::string_view& line : lines) {
            line.remove_suffix(endsInReturn(line) ? 1 : 0);
        }
    }
}

/// "[HH:MM:SS.mmm] " in front of the line. The blank may be missing where nothing follows.
std::optional<Time> TakeStamp(std::string_view& line) {
    constexpr std::string_view Form = "[00:00:00.000]";
    if (line.size() < Form.size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < Form.size(); ++i) {
        const bool isDigit = line[i] >= '0' && line[i] <= '9';
        if (Form[i] == '0' ? !isDigit : line[i] != Form[i]) {
            return std::nullopt;
        }
    }
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = 0;
        std::from_chars(line.data() + at, line.data() + at + digits, value);
        return value;
    };
    const Time time = hours(number(1, 2)) + std::chrono::minutes(number(4, 2)) +
                      std::chrono::seconds(number(7, 2)) + std::chrono::milliseconds(number(10, 3));
    line.remove_prefix(Form.size());
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    return time;
}

/// Whether the line ends in an escaped carriage return, and not in an escaped backslash and an "r".
bool EndsInEscapedReturn(std::string_view line) {
    if (!line.ends_with("\\r")) {
        return false;
    }
    line.remove_suffix(1);
    return (line.size() - line.find_last_not_of('\\') - 1) % 2 == 1;
}

/// The byte behind a backslash. Nothing, and nothing taken, if these are not an escape.
std::optional<char> TakeEscape(std::string_view& line) {
    constexpr std::string_view Names = "rt0\\";
    constexpr std::string_view Bytes("\r\t\0\\", 4);
    const std::size_t known = line.size() < 2 ? Names.npos : Names.find(line[1]);
    if (known != Names.npos) {
        line.remove_prefix(2);
        return Bytes[known];
    }
    unsigned value = 0;
    if (line.size() < 4 || line[1] != 'x' ||
        std::from_chars(line.data() + 2, line.data() + 4, value, 16).ptr != line.data() + 4) {
        return std::nullopt;
    }
    line.remove_prefix(4);
    return static_cast<char>(value);
}

/// The byte of a character that the log kept in 16 bits and the file holds in UTF-8. The log has
/// one character for all bytes that it could not tell.
std::optional<char> TakeWide(std::string_view& line) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(line[i]); };
    if (line.starts_with("\xEF\xBF\xBF")) {
        line.remove_prefix(3);
        return '\xFF';
    }
    if (line.size() < 2 || (at(0) & 0xFEU) != 0xC2U || (at(1) & 0xC0U) != 0x80U) {
        return std::nullopt;
    }
    const auto byte = static_cast<char>(((at(0) & 3U) << 6U) | (at(1) & 0x3FU));
    line.remove_prefix(2);
    return byte;
}

std::string Decode(std::string_view line, bool escaped) {
    std::string text;
    while (!line.empty()) {
        std::optional<char> byte = escaped && line[0] == '\\' ? TakeEscape(line) : TakeWide(line);
        if (!byte) {
            byte = line[0];
            line.remove_prefix(1);
        }
        text += *byte;
    }
    return text;
}

}  // namespace

TraceText::TraceText(std::string_view file) {
    file.remove_prefix(file.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    std::vector<std::string_view> lines = SplitLines(file);
    TakeOffForeignLineEnds(lines);
    std::optional<Time> time;
    Time day{0};
    for (std::string_view& line : lines) {
        if (const auto stamp = TakeStamp(line)) {
            day += time && day + *stamp + hours(12) < *time ? hours(24) : hours(0);
            time = day + *stamp;
        }
        lines_.push_back({0, time});
    }
    const bool escaped = std::ranges::any_of(lines, EndsInEscapedReturn);
    const bool returnsLost = !escaped && std::ranges::none_of(lines, [](std::string_view line) {
        return line.find('\r') != line.npos;
    });
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines_[i].begin = text_.size();
        text_ += Decode(lines[i], escaped);
        if (returnsLost && !lines[i].empty() && i + 1 < lines.size() && lines[i + 1].empty()) {
            text_ += '\r';
        }
        text_ += '\n';
    }
}

std::size_t TraceText::LineOf(std::size_t place) const {
    const auto next = std::ranges::upper_bound(lines_, place, {}, &Line::begin);
    return static_cast<std::size_t>(next - lines_.begin());
}

std::optional<Time> TraceText::TimeOf(std::size_t place) const {
    const std::size_t line = LineOf(place);
    return line == 0 ? std::nullopt : lines_[line - 1].time;
}

}  // namespace simulator
