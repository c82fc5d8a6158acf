#pragma once

#include <array>
#include <memory>
#include <string>

#include "platform/win32.h"

namespace log_viewer {

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, HandleCloser>;

/// The title of the viewer's top-level window, by which the module finds it.
inline constexpr const WCHAR* WindowTitleText = WIDE("Zembra Log");

/// The reader's side of the log channel: one block of text that the module and other processes
/// append to, a mutex around it, and an event that says that a line has ended. The block is never
/// trusted: nothing is read past it, each character is read once, and a block with no end counts as
/// full. One thread only.
class Channel {
  public:
    /// What the block holds at most, in 16-bit characters with the closing zero.
    static constexpr std::size_t BlockCharacters = 5000;

    /// Opens the three named objects, or makes them. Throws std::runtime_error.
    Channel();

    /// Waits for the end of a line to be announced, at most so many milliseconds.
    void WaitForLine(DWORD milliseconds);

    /// Takes the whole text and leaves an empty one. False, and no text, if the mutex was not to be
    /// had within so many milliseconds. A mutex that its holder left behind counts as had.
    bool Take(std::u16string& text, DWORD milliseconds);

  private:
    struct Unmapper {
        void operator()(WCHAR* view) const { UnmapViewOfFile(view); }
    };

    OwnedHandle map_;
    std::unique_ptr<WCHAR, Unmapper> block_;
    OwnedHandle mutex_;
    OwnedHandle event_;
    std::array<char16_t, BlockCharacters> copy_{};
};

/// The right to be the one viewer of this machine: two would take each other's text.
class ViewerSeat {
  public:
    ViewerSeat();
    /// Whether no other viewer runs: none that holds a seat, and none of another make.
    explicit operator bool() const { return free_; }

  private:
    OwnedHandle seat_;
    bool free_;
};

}  // namespace log_viewer
