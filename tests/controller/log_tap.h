#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "platform/lock_hold.h"
#include "support/clock.h"

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
    bool WaitFor(const std::string& text, milliseconds limit = std::chrono::seconds(30));

  private:
    void Collect();

    LogBlock block_;
    CRITICAL_SECTION lock_;
    std::string text_;
    std::atomic<bool> stop_{false};
    Thread thread_;
};

}  // namespace test_support
