#include "log/zbr_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <string_view>

#include "platform/ownership.h"

namespace {

constexpr DWORD MapBytes = 10000;
constexpr DWORD MutexWaitMilliseconds = 5000;
static_assert(MapBytes == LogBlockCharacters * sizeof(WCHAR));

/// Length of the block's text, or LogBlockCharacters when it has no end. The block is measured for
/// every piece and is mostly full, so it is passed over in stretches that the compiler can look at
/// with vector instructions.
std::size_t MeasureBlock(const WCHAR* block) {
    constexpr std::size_t Stretch = 40;
    static_assert(LogBlockCharacters % Stretch == 0);
    const auto hasEnd = [block](std::size_t start) {
        std::uint16_t ends = 0;  // As wide as a character: the vectors stay whole.
        for (std::size_t i = 0; i < Stretch; ++i) {
            ends = static_cast<std::uint16_t>(ends | (block[start + i] == 0 ? 0xFFFFU : 0U));
        }
        return ends != 0;
    };
    std::size_t length = 0;
    while (length < LogBlockCharacters && !hasEnd(length)) {
        length += Stretch;
    }
    while (length < LogBlockCharacters && block[length] != 0) {
        ++length;
    }
    return length;
}

/// The 16-bit character of one narrow byte under the process's locale; 0xFFFF if it has none.
WCHAR Widen(char byte) {
    // The channel's characters are those of the signed byte, also beyond ASCII.
    // NOLINTNEXTLINE(bugprone-signed-char-misuse)
    const int value = static_cast<signed char>(byte);
    return static_cast<WCHAR>(value >= 0 ? static_cast<std::wint_t>(value) : std::btowc(value));
}

}  // namespace

constinit ZBR_Log LogChannel;

WCHAR* SharedMap::EnsureView() {
    if (WCHAR* view = view_.load()) {
        return view;
    }
    const HANDLE map = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                          MapBytes, WIDE("ZBR_LOG_MAPNAME"));
    if (map == nullptr) {
        return nullptr;
    }
    auto* const made =
        static_cast<WCHAR*>(MapViewOfFile(map, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, MapBytes));
    WCHAR* kept = nullptr;
    if (made != nullptr && view_.compare_exchange_strong(kept, made)) {
        map_.store(map);
        return made;
    }
    if (made != nullptr) {
        UnmapViewOfFile(made);
    }
    CloseHandle(map);
    return kept;
}

void SharedMap::Close() {
    if (WCHAR* view = view_.exchange(nullptr)) {
        UnmapViewOfFile(view);
    }
    if (HANDLE map = map_.exchange(nullptr)) {
        CloseHandle(map);
    }
}

template <typename Append>
void ZBR_Log::WritePiece(std::size_t length, bool hasLineFeed, Append append) {
    const bool viewerRuns = FindWindowW(nullptr, WIDE("Zembra Log")) != nullptr;
    if (length + 1 > LogBlockCharacters) {
        return;
    }
    WCHAR* const block = map_.EnsureView();
    if (block == nullptr) {
        return;
    }
    const HANDLE mutex =
        KeepOne(mutex_, [] { return CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME")); });
    const DWORD wait = WaitForSingleObject(mutex, MutexWaitMilliseconds);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
        return;
    }
    const std::size_t used = MeasureBlock(block);
    if (used + length + 1 <= LogBlockCharacters) {
        append(block + used);
        block[used + length] = 0;
    }
    ReleaseMutex(mutex);
    if (hasLineFeed && viewerRuns) {
        SetEvent(KeepOne(
            event_, [] { return CreateEventW(nullptr, FALSE, FALSE, WIDE("ZBR_LOG_EVENTNAME")); }));
    }
}

void ZBR_Log::WriteText(const char* text) {
    const std::size_t length = std::strlen(text);
    WritePiece(length, std::strchr(text, '\n') != nullptr,
               [=](WCHAR* end) { std::transform(text, text + length, end, Widen); });
}

void ZBR_Log::WriteWideText(const WCHAR* text) {
    const std::basic_string_view<WCHAR> view(text);
    WritePiece(view.size(), view.find(WCHAR{'\n'}) != view.npos,
               [=](WCHAR* end) { std::copy(view.begin(), view.end(), end); });
}

// The analyzer's argument-list check loses track of va_start when it sees several files in one run.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized)
void ZBR_Log::WriteFormatted(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return;
    }
    const auto size = static_cast<std::size_t>(length) + 1;
    const std::unique_ptr<char[]> text(new (std::nothrow) char[size]);
    if (text == nullptr) {
        return;
    }
    va_start(arguments, format);
    std::vsnprintf(text.get(), size, format, arguments);
    va_end(arguments);
    WriteText(text.get());
}
// NOLINTEND(clang-analyzer-valist.Uninitialized)

ZBR_Log& ZBR_Log::operator<<(const char* text) {
    WriteText(text);
    return *this;
}

ZBR_Log& ZBR_Log::operator<<(const std::string& text) {
    return *this << text.c_str();
}

ZBR_Log& ZBR_Log::operator<<(Decimal number) {
    WCHAR digits[349];
    _ltow_s(number.value, digits, sizeof(digits) / sizeof(digits[0]), 10);
    WriteWideText(digits);
    return *this;
}

void ZBR_Log::Close() {
    if (HANDLE event = event_.exchange(nullptr)) {
        CloseHandle(event);
    }
    map_.Close();
    if (HANDLE mutex = mutex_.exchange(nullptr)) {
        ReleaseMutex(mutex);
        CloseHandle(mutex);
    }
}
