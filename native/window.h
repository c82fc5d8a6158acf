#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "native/clock.h"
#include "native/machine.h"
#include "platform/win32.h"

/// Windows and their threads' message queues. One lock, `desktop`, guards them all; it is never
/// held while a dialog procedure runs. A dialog is changed by its owner's thread only, which holds
/// the lock as it does; so the owner reads its dialogs without the lock, and all others with it.
namespace posix {

inline constexpr LONG FrameWidth = 3;
inline constexpr LONG CaptionHeight = 23;

struct Control {
    std::u16string className;
    int id;
    DWORD style;
    std::u16string text;
    RECT place;  // Within the dialog's client area.
    bool enabled = true;
    HBITMAP picture = nullptr;
};

class MessageQueue;

struct Dialog {
    HWND handle = nullptr;
    int resource = 0;
    DLGPROC procedure = nullptr;
    MessageQueue* queue = nullptr;
    HWND owner = nullptr;
    std::u16string caption;
    std::unique_ptr<WindowTitle> title;
    RECT place{};
    bool visible = false;
    bool enabled = true;
    bool topmost = false;
    int timesActivated = 0;
    bool ended = false;
    bool disabledOwner = false;
    INT_PTR result = 0;
    std::vector<Control> controls;
    Dialog* next = nullptr;
};

/// What a window handle names: a dialog, or one of its controls. Both null if it has gone.
struct Window {
    Dialog* dialog;
    Control* control;
    explicit operator bool() const { return dialog != nullptr; }
};

extern std::mutex desktop;
/// All dialogs of the process, the newest first. Under the lock.
extern Dialog* dialogs;

/// The window of a handle; none leaves ERROR_INVALID_WINDOW_HANDLE. Under the lock.
Window Find(HWND window);

/// Whether a handle is that of the dialog or of one of its controls.
bool BelongsTo(HWND window, const Dialog& dialog);

const HWND DesktopWindow = reinterpret_cast<HWND>(std::uintptr_t{1});

RECT Moved(const RECT& place, LONG x, LONG y);

/// A place within a dialog's client area, on the screen.
RECT OnScreen(const Dialog& dialog, const RECT& place);

/// The handle of a control, by its index.
HWND ControlHandle(const Dialog& dialog, std::size_t index);

/// Gives a dialog its handle and the calling thread as its owner.
void Adopt(Dialog& dialog);

/// Makes a dialog known; until Remove, which also drops its messages and timers and fails the calls
/// that wait for it. Both by the owner.
void Add(Dialog& dialog);
void Remove(Dialog& dialog);

/// Runs the work on the thread of the window's owner, and gives its answer and its error code; 0 if
/// the window has gone, or goes before the work has begun.
LRESULT OnOwner(HWND window, const std::function<LRESULT(const Window&)>& work);

/// A message's way into the window's procedure. By the owner.
LRESULT SendToDialog(Dialog& dialog, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT SendToControl(Control& control, UINT message, WPARAM wParam, LPARAM lParam);

/// Serves one call or message of the calling thread; false if none came before the deadline.
bool ServeOne(Deadline deadline);

}  // namespace posix
