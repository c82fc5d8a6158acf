#pragma once

#include <string>
#include <string_view>

#include "platform/win32.h"

namespace log_viewer {

/// The text pane: a read-only edit control that keeps a limited number of lines. For the thread of
/// its window.
class LogPane {
  public:
    /// Null handle if the control could not be made.
    void Create(HWND parent, int id, std::size_t limit);
    HWND Handle() const { return edit_; }

    /// Whether the end is in sight and nothing is selected: nobody is looking at older text, and
    /// more may be appended.
    bool IsAtEnd() const;

    /// Appends UTF-8 text whose lines end in CR LF, and shows the end.
    void Append(std::string_view text);
    void Clear();

    /// Drops the selection and shows the end.
    void ShowEnd();

    /// Selects and shows the next place of the text, or the previous one, from the selection on and
    /// around the end. Without regard to case. False if there is none.
    bool Find(const std::wstring& text, bool forward);

  private:
    struct Selection {
        DWORD start;
        DWORD end;
    };

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    Selection Selected() const;
    std::wstring Text() const;
    void Replace(const Selection& part, const wchar_t* text) const;
    /// How many lines are to go; more than one at a time, since that moves all the text that stays.
    int Surplus() const;

    HWND edit_ = nullptr;
    int limit_ = 0;
};

}  // namespace log_viewer
