#pragma once

#include "log_viewer/log_pane.h"
#include "platform/win32.h"

namespace log_viewer {

/// Identifiers of the window's controls and keys.
enum Command : int {
    PauseCommand = 100,
    ClearCommand,
    SaveCommand,
    StampsCommand,
    FindLabel,
    FindText,
    FindCommand,
    NextCommand,
    PreviousCommand,
    LogText,
    StatusLine,
};

/// What stands in the window: a row of buttons, the text pane, a status line. All measures come
/// from the system's font for messages, so they fit its size. For the thread of the window.
class WindowControls {
  public:
    WindowControls();
    ~WindowControls();
    WindowControls(const WindowControls&) = delete;
    WindowControls& operator=(const WindowControls&) = delete;

    void Create(HWND parent, std::size_t lines);
    /// Fits all to the size of the window.
    void Layout();
    /// The least width of the window that shows all of the row of buttons.
    int LeastWidth() const;
    int Size(int lines) const { return lines * lineHeight_; }

    LogPane& Pane() { return pane_; }

  private:
    HWND Add(const wchar_t* kind, const wchar_t* text, int id, DWORD style, DWORD extended = 0);
    int WidthOf(int id) const;

    HFONT font_;
    HFONT fixedFont_;
    int lineHeight_ = 0;
    HWND parent_ = nullptr;
    HWND status_ = nullptr;
    LogPane pane_;
};

}  // namespace log_viewer
