#include "native/window.h"

#include <unistd.h>

#include "native/handle.h"
#include "native/message_queue.h"

namespace posix {

constinit std::mutex desktop;
constinit Dialog* dialogs = nullptr;

namespace {

// A handle is the process, the number of the dialog and one more than the control's index.
constexpr unsigned ProcessShift = 40;
constexpr unsigned NumberShift = 8;
constexpr std::uintptr_t IndexMask = 0xFF;
constinit std::uint32_t newestNumber = 0;

constexpr RECT Screen{.left = 0, .top = 0, .right = 1280, .bottom = 1024};

std::uintptr_t Number(HWND window) {
    return reinterpret_cast<std::uintptr_t>(window);
}

RECT PlaceOf(const Window& window) {
    return window.control != nullptr ? OnScreen(*window.dialog, window.control->place)
                                     : window.dialog->place;
}

}  // namespace

bool BelongsTo(HWND window, const Dialog& dialog) {
    return (Number(window) & ~IndexMask) == Number(dialog.handle);
}

RECT Moved(const RECT& place, LONG x, LONG y) {
    return {.left = place.left + x,
            .top = place.top + y,
            .right = place.right + x,
            .bottom = place.bottom + y};
}

RECT OnScreen(const Dialog& dialog, const RECT& place) {
    return Moved(place, dialog.place.left + FrameWidth,
                 dialog.place.top + FrameWidth + CaptionHeight);
}

Window Find(HWND window) {
    for (Dialog* dialog = dialogs; dialog != nullptr; dialog = dialog->next) {
        const std::size_t index = Number(window) & IndexMask;
        if (BelongsTo(window, *dialog) && index <= dialog->controls.size()) {
            return {.dialog = dialog,
                    .control = index == 0 ? nullptr : &dialog->controls[index - 1]};
        }
    }
    return Fail(ERROR_INVALID_WINDOW_HANDLE, Window{});
}

HWND ControlHandle(const Dialog& dialog, std::size_t index) {
    return reinterpret_cast<HWND>(Number(dialog.handle) + index + 1);
}

void Adopt(Dialog& dialog) {
    const std::lock_guard hold(desktop);
    const auto process = static_cast<std::uintptr_t>(getpid());
    dialog.handle = reinterpret_cast<HWND>(process << ProcessShift | std::uintptr_t{++newestNumber}
                                                                         << NumberShift);
    dialog.queue = &OwnQueue();
}

void Add(Dialog& dialog) {
    const std::lock_guard hold(desktop);
    dialog.next = dialogs;
    dialogs = &dialog;
}

void Remove(Dialog& dialog) {
    const std::lock_guard hold(desktop);
    Dialog** link = &dialogs;
    while (*link != &dialog) {
        link = &(*link)->next;
    }
    *link = dialog.next;
    dialog.queue->Forget(dialog);
}

}  // namespace posix

BOOL IsWindow(HWND handle) {
    const std::lock_guard hold(posix::desktop);
    return posix::Find(handle) ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND handle) {
    const std::lock_guard hold(posix::desktop);
    const posix::Window window = posix::Find(handle);
    return window && window.dialog->visible ? TRUE : FALSE;
}

BOOL UpdateWindow(HWND handle) {
    const std::lock_guard hold(posix::desktop);
    return posix::Find(handle) ? TRUE : FALSE;
}

HWND GetParent(HWND handle) {
    const std::lock_guard hold(posix::desktop);
    const posix::Window window = posix::Find(handle);
    if (!window) {
        return nullptr;
    }
    return window.control != nullptr ? window.dialog->handle : window.dialog->owner;
}

BOOL GetWindowRect(HWND handle, LPRECT place) {
    if (handle == posix::DesktopWindow) {
        *place = posix::Screen;
        return TRUE;
    }
    const std::lock_guard hold(posix::desktop);
    const posix::Window window = posix::Find(handle);
    if (!window) {
        return FALSE;
    }
    *place = posix::PlaceOf(window);
    return TRUE;
}

HWND GetDesktopWindow() {
    return posix::DesktopWindow;
}
