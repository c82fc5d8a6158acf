#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>

#include "platform/win32.h"

namespace test_support {

/// The log channel's block, as another process sees it: 5000 characters under the channel's mutex.
class LogBlock {
  public:
    LogBlock();
    ~LogBlock();
    LogBlock(const LogBlock&) = delete;
    LogBlock& operator=(const LogBlock&) = delete;

    /// Takes the text out and leaves an empty one. Characters beyond 8 bits become "?".
    std::string Take();
    /// The block itself, for tests that spoil it. Hold the mutex.
    WCHAR* Characters() { return block_; }
    HANDLE Mutex() const { return mutex_; }

  private:
    HANDLE map_;
    WCHAR* block_;
    HANDLE mutex_;
};

/// Collects everything that is logged while it lives.
class LogTap {
  public:
    LogTap();
    ~LogTap();

    /// All text so far.
    std::string Text();
    /// All text so far, and forgets it.
    std::string Take();
    bool WaitFor(const std::string& text,
                 std::chrono::milliseconds limit = std::chrono::seconds(30));

  private:
    void Collect();

    LogBlock block_;
    std::mutex mutex_;
    std::string text_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/// Waits until the condition holds; false after a generous limit.
template <typename Condition>
bool Eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace test_support
