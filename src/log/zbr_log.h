#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/win32.h"

/// The shared block: what it holds at most, in 16-bit characters with the closing zero.
inline constexpr std::size_t LogBlockCharacters = 5000;

/// The block that module and viewer share, mapped at first need.
class SharedMap {
  public:
    /// The view of the block, making mapping and view when there is none. Null when the system
    /// refuses; the next call tries again. Safe from any thread: of two first users one wins and
    /// the other gives its own handles back.
    WCHAR* EnsureView();

    /// Unmaps the view and closes the mapping, if there are any.
    void Close();

  private:
    std::atomic<HANDLE> map_{nullptr};
    std::atomic<WCHAR*> view_{nullptr};
};

/// A number in a log line: decimal, with a "-" when negative.
struct Decimal {
    std::int32_t value;
};

/// The writer's side of the log channel: appends texts to the shared block for a viewer in another
/// process. Each text is one piece; a log line is a run of pieces whose last one ends in a
/// line-feed. Any thread may write, no lock of this process is taken, and the named mutex of the
/// channel is the innermost lock of the module: callers may hold others. A piece can wait for that
/// mutex for 5000 ms at most. A text that can't be placed is lost; callers never learn of it.
///
/// The block belongs to other processes too and is never trusted: nothing is read or written past
/// its 5000 characters, and a block with no end counts as full.
class ZBR_Log final {
  public:
    constexpr ZBR_Log() = default;
    ZBR_Log(const ZBR_Log&) = delete;
    ZBR_Log& operator=(const ZBR_Log&) = delete;

    /// Appends a zero-terminated narrow text.
    virtual void WriteText(const char* text);
    /// Appends a zero-terminated text of 16-bit characters.
    virtual void WriteWideText(const WCHAR* text);

    /// Appends one printf-style line. Does nothing when there is no memory for it.
    void WriteFormatted(const char* format, ...);

    ZBR_Log& operator<<(const char* text);
    ZBR_Log& operator<<(const std::string& text);
    ZBR_Log& operator<<(Decimal number);

    /// Closes the event, the map and the mutex. The module calls it as its last act.
    void Close();

  private:
    template <typename Append>
    void WritePiece(std::size_t length, bool hasLineFeed, Append append);

    std::atomic<HANDLE> mutex_{nullptr};
    SharedMap map_;
    std::atomic<HANDLE> event_{nullptr};
};

/// The one channel of the module, usable from its first instruction on.
extern ZBR_Log LogChannel;

/// Writes the pieces of one log line to LogChannel, one after the other. The last piece has to
/// carry the line-feed. Any thread, under any lock; pieces of two threads' lines can mix.
template <typename... Pieces>
void WriteLine(const Pieces&... pieces) {
    (LogChannel << ... << pieces);
}
