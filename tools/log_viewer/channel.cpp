#include "log_viewer/channel.h"

#include <stdexcept>

namespace log_viewer {

namespace {

constexpr DWORD BlockBytes = Channel::BlockCharacters * sizeof(WCHAR);

/// The error of the call just made is part of the message.
template <typename Made>
Made Checked(Made made, const char* what) {
    if (made == nullptr) {
        throw std::runtime_error("cannot open the log's " + std::string(what) + ", error " +
                                 std::to_string(GetLastError()));
    }
    return made;
}

/// Copies the block's text and gives its length. A writer that ignores the mutex may change the
/// block meanwhile.
std::size_t CopyText(const volatile WCHAR* block, char16_t* copy) {
    std::size_t length = 0;
    for (; length < Channel::BlockCharacters; ++length) {
        copy[length] = static_cast<char16_t>(block[length]);
        if (copy[length] == 0) {
            break;
        }
    }
    return length;
}

}  // namespace

Channel::Channel()
    : map_(Checked(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, BlockBytes,
                                      WIDE("ZBR_LOG_MAPNAME")),
                   "block")),
      block_(Checked(static_cast<WCHAR*>(MapViewOfFile(map_.get(), FILE_MAP_READ | FILE_MAP_WRITE,
                                                       0, 0, BlockBytes)),
                     "block")),
      mutex_(Checked(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME")), "mutex")),
      event_(Checked(CreateEventW(nullptr, FALSE, FALSE, WIDE("ZBR_LOG_EVENTNAME")), "event")) {}

void Channel::WaitForLine(DWORD milliseconds) {
    WaitForSingleObject(event_.get(), milliseconds);
}

bool Channel::Take(std::u16string& text, DWORD milliseconds) {
    text.clear();
    const DWORD wait = WaitForSingleObject(mutex_.get(), milliseconds);
    if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
        return false;
    }
    const std::size_t length = CopyText(block_.get(), copy_.data());
    block_.get()[0] = 0;
    ReleaseMutex(mutex_.get());
    text.assign(copy_.data(), length);
    return true;
}

ViewerSeat::ViewerSeat()
    : seat_(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_VIEWERSEAT"))),
      free_(seat_ != nullptr && GetLastError() != ERROR_ALREADY_EXISTS &&
            FindWindowW(nullptr, WindowTitleText) == nullptr) {}

}  // namespace log_viewer
