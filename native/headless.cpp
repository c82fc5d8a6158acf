#include "native/headless.h"

#include <algorithm>

#include "native/handle.h"
#include "native/pictures.h"
#include "native/wide_text.h"
#include "native/window.h"

namespace headless {
namespace {

constexpr DWORD ES_READONLY = 0x0800;
constexpr DWORD PollPeriod = 1;
constexpr DWORD LoopPeriod = 10;

posix::Deadline After(std::chrono::milliseconds limit) {
    return posix::After(static_cast<DWORD>(limit.count()));
}

ControlView View(const posix::Control& control) {
    const auto shown = posix::PictureOf(control.picture);
    return {.id = control.id,
            .className = posix::ToUtf8(control.className),
            .text = posix::ToUtf8(control.text),
            .enabled = control.enabled,
            .readOnly = control.className == u"Edit" && (control.style & ES_READONLY) != 0,
            .picture = shown ? shown->id : 0,
            .pictureHeight = shown ? shown->height : 0};
}

/// Under the lock of the windows.
DialogView View(const posix::Dialog& dialog) {
    DialogView view{.window = dialog.handle,
                    .resource = dialog.resource,
                    .caption = posix::ToUtf8(dialog.caption),
                    .visible = dialog.visible,
                    .enabled = dialog.enabled,
                    .topmost = dialog.topmost,
                    .timesActivated = dialog.timesActivated,
                    .place = dialog.place,
                    .controls = {}};
    for (const posix::Control& control : dialog.controls) {
        view.controls.push_back(View(control));
    }
    return view;
}

}  // namespace

const ControlView* DialogView::Find(int id) const {
    const auto found = std::ranges::find(controls, id, &ControlView::id);
    return found == controls.end() ? nullptr : &*found;
}

std::vector<DialogView> OpenDialogs() {
    std::vector<DialogView> views;
    const std::lock_guard hold(posix::desktop);
    for (posix::Dialog* one = posix::dialogs; one != nullptr; one = one->next) {
        views.push_back(View(*one));
    }
    std::ranges::reverse(views);
    return views;
}

std::optional<DialogView> ViewOf(HWND window) {
    const std::lock_guard hold(posix::desktop);
    const posix::Window found = posix::Find(window);
    return found ? std::optional(View(*found.dialog)) : std::nullopt;
}

std::optional<DialogView> WaitForDialog(int resource, std::chrono::milliseconds limit) {
    const posix::Deadline deadline = After(limit);
    for (;;) {
        for (const DialogView& view : OpenDialogs()) {
            if (view.resource == resource && view.visible) {
                return view;
            }
        }
        if (posix::Now() >= deadline) {
            return std::nullopt;
        }
        posix::SleepUntil(posix::After(PollPeriod));
    }
}

bool OnOwner(HWND window, const std::function<void()>& work) {
    return posix::OnOwner(window, [&](const posix::Window&) -> LRESULT {
               work();
               return TRUE;
           }) != FALSE;
}

bool TypeText(HWND window, int id, std::string_view text) {
    const std::optional<DialogView> dialog = ViewOf(window);
    const ControlView* control = dialog ? dialog->Find(id) : nullptr;
    if (control == nullptr || control->className != "Edit" || control->readOnly ||
        !control->enabled || !dialog->enabled) {
        return false;
    }
    return SetDlgItemTextW(window, id, posix::FromUtf8(text).c_str()) != FALSE;
}

bool RunMessages(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const posix::Deadline deadline = After(limit);
    while (!done()) {
        if (posix::Now() >= deadline) {
            return false;
        }
        posix::ServeOne(std::min(deadline, posix::After(LoopPeriod)));
    }
    return true;
}

int LoadedPictures() {
    return posix::loadedPictures;
}

}  // namespace headless
