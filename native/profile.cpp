#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "native/handle.h"
#include "native/machine.h"
#include "native/wide_text.h"

namespace posix {
namespace {

using Text = std::u16string_view;

constexpr std::size_t LargestFile = std::size_t{1} << 20;
constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view Utf16Mark = "\xFF\xFE";

/// The whole file, or nothing with the error code left behind. Only regular files of a sane size
/// are read, so that neither a pipe nor a disk image in its place can hold the caller up.
std::optional<std::string> ReadWhole(const std::string& path) {
    const File file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) {
        return Fail(ErrorOf(errno), std::nullopt);
    }
    if (!S_ISREG(status.st_mode) || static_cast<std::size_t>(status.st_size) > LargestFile) {
        return Fail(ERROR_ACCESS_DENIED, std::nullopt);
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    ssize_t got = 1;
    while (size < bytes.size() && got != 0) {
        got = read(file.Get(), bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno != EINTR) {
            return Fail(ErrorOf(errno), std::nullopt);
        }
        size += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    bytes.resize(size);
    return bytes;
}

std::u16string Decode(std::string_view bytes) {
    if (bytes.starts_with(Utf8Mark)) {
        return FromUtf8(bytes.substr(Utf8Mark.size()));
    }
    if (!bytes.starts_with(Utf16Mark)) {
        return FromAnsi(bytes);
    }
    std::u16string text;
    for (std::size_t i = Utf16Mark.size(); i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(low | (high << 8));
    }
    return text;
}

Text Trimmed(Text text) {
    constexpr Text Blanks = u" \t\v\f\r\n";
    const std::size_t first = text.find_first_not_of(Blanks);
    return first == Text::npos ? Text()
                               : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

Text WithoutQuotes(Text value) {
    const bool quoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                        value.back() == value.front();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

/// Takes the first line off a text.
Text TakeLine(Text& text) {
    const std::size_t end = std::min(text.find_first_of(u"\r\n"), text.size());
    const Text line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return Trimmed(line);
}

/// The value of a key in the first section of this name.
std::optional<Text> FindValue(Text text, Text section, Text key) {
    bool inside = false;
    while (!text.empty()) {
        const Text line = TakeLine(text);
        if (line.starts_with(u'[')) {
            if (inside) {
                return std::nullopt;
            }
            const std::size_t end = line.rfind(u']');
            inside = end != Text::npos && SameFolded(Trimmed(line.substr(1, end - 1)), section);
            continue;
        }
        const std::size_t equals = line.find(u'=');
        if (inside && !line.starts_with(u';') && equals != Text::npos &&
            SameFolded(Trimmed(line.substr(0, equals)), key)) {
            return Trimmed(line.substr(equals + 1));
        }
    }
    return std::nullopt;
}

/// The value without its quotes, or nothing with the error code left behind.
std::optional<std::u16string> ReadValue(LPCWSTR section, LPCWSTR key, LPCWSTR file) {
    if (section == nullptr || key == nullptr || file == nullptr) {
        return Fail(ERROR_NOT_SUPPORTED, std::nullopt);
    }
    const std::string path = NativePath(file);
    if (path.empty()) {
        return Fail(ERROR_PATH_NOT_FOUND, std::nullopt);
    }
    const std::optional<std::string> bytes = ReadWhole(path);
    if (!bytes) {
        return std::nullopt;
    }
    const std::u16string text = Decode(*bytes);
    const std::optional<Text> value = FindValue(text, Trimmed(section), Trimmed(key));
    if (!value) {
        return Fail(ERROR_FILE_NOT_FOUND, std::nullopt);
    }
    return std::u16string(WithoutQuotes(*value));
}

/// Decimal with an optional sign, modulo 2^32, up to the first other character.
UINT ToNumber(Text text) {
    text = Trimmed(text);
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+')) {
        text.remove_prefix(1);
    }
    UINT number = 0;
    for (const char16_t letter : text) {
        if (letter < '0' || letter > '9') {
            break;
        }
        number = number * 10 + (letter - UINT{'0'});
    }
    return negative ? UINT{0} - number : number;
}

DWORD CopyOut(Text text, LPWSTR buffer, DWORD size) {
    const std::size_t count = std::min(text.size(), std::size_t{size} - 1);
    std::copy_n(text.begin(), count, buffer);
    buffer[count] = 0;
    return static_cast<DWORD>(count);
}

}  // namespace
}  // namespace posix

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT standard, LPCWSTR file) {
    const UINT fallback = static_cast<UINT>(standard);
    return posix::Guarded(fallback, [&] {
        const auto value = posix::ReadValue(section, key, file);
        return value && !value->empty() ? posix::ToNumber(*value) : fallback;
    });
}

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR standard, LPWSTR buffer,
                               DWORD size, LPCWSTR file) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    buffer[0] = 0;
    return posix::Guarded(DWORD{0}, [&] {
        const auto value = posix::ReadValue(section, key, file);
        if (value) {
            return posix::CopyOut(*value, buffer, size);
        }
        posix::Text fallback = standard != nullptr ? standard : u"";
        fallback = fallback.substr(0, fallback.find_last_not_of(u' ') + 1);
        return posix::CopyOut(fallback, buffer, size);
    });
}
