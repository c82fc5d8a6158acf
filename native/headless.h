#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/win32.h"

/// The dialogs of this process as an operator sees them. For hosts, tools and tests, not for the
/// product. Any thread; nothing here waits for a dialog's owner but TypeText. Texts are UTF-8.
///
/// A button is pressed with PostMessageW(window, WM_COMMAND, id, 0), the close box with
/// PostMessageW(window, WM_CLOSE, 0, 0).
namespace headless {

struct ControlView {
    int id;
    std::string className;  // "Button", "Edit" or "Static".
    std::string text;
    bool enabled;
    bool readOnly;
    int picture;  // The number of the picture that it shows, 0 for none.
    int pictureHeight;
};

struct DialogView {
    HWND window;
    int resource;
    std::string caption;
    bool visible;
    bool enabled;
    bool topmost;
    int timesActivated;  // By ShowWindow: each time it came to the front and took the keyboard.
    RECT place;
    std::vector<ControlView> controls;

    /// The first control of that id; null if there is none.
    const ControlView* Find(int id) const;
};

/// All dialogs, visible or not, the oldest first.
std::vector<DialogView> OpenDialogs();

/// One of them; nothing if it has gone.
std::optional<DialogView> ViewOf(HWND window);

/// Waits until a dialog of that number is visible; nothing if none was within the limit.
std::optional<DialogView> WaitForDialog(int resource, std::chrono::milliseconds limit);

/// Runs the work on the thread of the window's owner, in its message loop, and returns when it is
/// done. False if the window has gone.
bool OnOwner(HWND window, const std::function<void()>& work);

/// Replaces the text of an edit control, as typing does. False if the control is none, takes no
/// text or has gone.
bool TypeText(HWND window, int id, std::string_view text);

/// Runs the calling thread's message loop until `done`, which is asked at least each 10 ms, or for
/// the limit. Whether it was done.
bool RunMessages(const std::function<bool()>& done, std::chrono::milliseconds limit);

/// How many pictures are loaded and not deleted.
int LoadedPictures();

}  // namespace headless
