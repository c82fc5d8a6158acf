#include "controller/log_tap.h"

#include <utility>

namespace test_support {

namespace {

constexpr std::size_t BlockCharacters = 5000;

}  // namespace

LogBlock::LogBlock()
    : map_(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                              BlockCharacters * sizeof(WCHAR), WIDE("ZBR_LOG_MAPNAME"))),
      block_(static_cast<WCHAR*>(MapViewOfFile(map_, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0,
                                               BlockCharacters * sizeof(WCHAR)))),
      mutex_(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME"))) {
    Take();
}

LogBlock::~LogBlock() {
    UnmapViewOfFile(block_);
    CloseHandle(map_);
    CloseHandle(mutex_);
}

std::string LogBlock::Take() {
    std::string text;
    WaitForSingleObject(mutex_, INFINITE);
    for (std::size_t i = 0; i < BlockCharacters && block_[i] != 0; ++i) {
        text += block_[i] < 256 ? static_cast<char>(block_[i]) : '?';
    }
    block_[0] = 0;
    ReleaseMutex(mutex_);
    return text;
}

LogTap::LogTap() {
    InitializeCriticalSection(&lock_);
    thread_ = Thread([this] { Collect(); });
}

LogTap::~LogTap() {
    stop_ = true;
    thread_.Join();
    DeleteCriticalSection(&lock_);
}

void LogTap::Collect() {
    while (!stop_) {
        {
            const LockHold hold(lock_);
            text_ += block_.Take();
        }
        Pause(milliseconds(1));
    }
}

std::string LogTap::Text() {
    const LockHold hold(lock_);
    text_ += block_.Take();
    return text_;
}

std::string LogTap::Take() {
    const LockHold hold(lock_);
    text_ += block_.Take();
    return std::exchange(text_, {});
}

bool LogTap::WaitFor(const std::string& text, milliseconds limit) {
    return Eventually([&] { return Text().find(text) != std::string::npos; }, limit);
}

}  // namespace test_support
