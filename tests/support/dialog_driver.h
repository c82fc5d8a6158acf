#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/win32.h"

namespace test_support {

inline constexpr std::chrono::milliseconds DialogLimit{60'000};

/// A dialog of this process, read and operated as by its user, from any thread but its owner's:
/// the owner's message loop has to run meanwhile. What a dialog that has gone is asked for is
/// empty, 0 or false. Texts are ASCII.
class DialogDriver {
  public:
    /// Waits until a dialog with that caption is visible. Throws std::runtime_error if none was
    /// within the limit.
    explicit DialogDriver(const std::string& caption,
                          std::chrono::milliseconds limit = DialogLimit);
    explicit DialogDriver(HWND window) : window_(window) {}

    HWND Window() const { return window_; }
    bool Exists() const;
    bool IsVisible() const;
    /// Whether its user can operate it; the owner of a modal dialog is disabled.
    bool AcceptsInput() const;
    std::string Caption() const;

    std::string Text(int control) const;
    bool IsEnabled(int control) const;
    /// The number of the module's picture that a control shows, 0 for none.
    int Picture(int control) const;
    int PictureHeight(int control) const;

    /// Types into a box as its user does; returns when the dialog has it.
    void Type(int control, const std::string& text) const {
        SetDlgItemTextA(window_, control, text.c_str());
    }
    /// Presses a button and returns when the dialog has done what it does.
    void PressAndWait(int control) const {
        SendMessageW(window_, WM_COMMAND, Unsigned(control), 0);
    }
    void Press(int control) const { PostMessageW(window_, WM_COMMAND, Unsigned(control), 0); }
    void Close() const { PostMessageW(window_, WM_CLOSE, 0, 0); }

  private:
    static WPARAM Unsigned(int control) { return static_cast<WPARAM>(control); }

    HWND window_;
};

/// Runs the calling thread's message loop until `done` or for the limit. Whether it was done.
bool RunMessages(const std::function<bool()>& done, std::chrono::milliseconds limit = DialogLimit);

/// Waits without a message loop, in the same way.
bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = DialogLimit);

/// The module with the dialogs: the library if it is loaded, else this program.
HINSTANCE ResourceInstance();

}  // namespace test_support
