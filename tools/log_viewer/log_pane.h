#pragma once

#include <string>
#include <string_view>

#include "platform/win32.h"

namespace log_viewer {

/// The text pane: a read-only edit control that keeps a limited number of lines. It follows the end
/// while the end is in sight and nothing is selected; else its view and selection stay where they
/// are. For the thread of its window.
class LogPane {
  public:
    /// Null handle if the control could not be made.
    void Create(HWND parent, int id, std::size_t limit);
    HWND Handle() const { return edit_; }

    /// Appends UTF-8 text whose lines end in CR LF.
    void Append(std::string_view text);
    void Clear();

    /// Drops the selection and follows the end again.
    void FollowEnd();

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
    bool IsEndInSight() const;
    std::wstring Text() const;
    void Replace(const Selection& part, const wchar_t* text) const;
    /// What has been cut off at the beginning.
    struct Cut {
        DWORD characters;
        int lines;
    };
    Cut TrimToLimit() const;

    HWND edit_ = nullptr;
    int limit_ = 0;
};

}  // namespace log_viewer
