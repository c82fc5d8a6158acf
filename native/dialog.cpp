#include <algorithm>
#include <utility>

#include "native/dialog_resources.h"
#include "native/handle.h"
#include "native/window.h"

namespace posix {
namespace {

constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_DISABLED = 0x08000000;

/// Work on a dialog as such: a control is no window of the right kind.
LRESULT OnDialog(HWND handle, const std::function<LRESULT(Dialog&)>& work) {
    return Guarded(LRESULT{0}, [&] {
        return OnOwner(handle, [&](const Window& window) -> LRESULT {
            if (window.control != nullptr) {
                return Fail(ERROR_INVALID_WINDOW_HANDLE);
            }
            return work(*window.dialog);
        });
    });
}

/// Finds the dialog that is to own another; false if it has gone.
bool ResolveOwner(HWND& owner, RECT& ownerPlace) {
    if (owner == nullptr || owner == DesktopWindow) {
        owner = nullptr;
        return true;
    }
    const std::lock_guard hold(desktop);
    const Window window = Find(owner);
    if (window) {
        owner = window.dialog->handle;
        ownerPlace = OnScreen(*window.dialog, {});
    }
    return static_cast<bool>(window);
}

std::unique_ptr<Dialog> MakeDialog(const DialogTemplate& form, HWND owner, const RECT& at,
                                   DLGPROC procedure) {
    auto dialog = std::make_unique<Dialog>();
    Adopt(*dialog);
    dialog->resource = form.id;
    dialog->procedure = procedure;
    dialog->owner = owner;
    dialog->caption = form.caption;
    dialog->title = std::make_unique<WindowTitle>(form.caption, dialog->handle);
    dialog->place = Moved({.left = 0,
                           .top = 0,
                           .right = form.width + 2 * FrameWidth,
                           .bottom = form.height + 2 * FrameWidth + CaptionHeight},
                          at.left, at.top);
    dialog->controls.reserve(form.controls.size());
    for (const ControlTemplate& control : form.controls) {
        dialog->controls.push_back({.className = std::u16string(control.className),
                                    .id = control.id,
                                    .style = control.style,
                                    .text = std::u16string(control.text),
                                    .place = control.place,
                                    .enabled = (control.style & WS_DISABLED) == 0});
    }
    return dialog;
}

void Show(Dialog& dialog, bool visible) {
    const std::lock_guard hold(desktop);
    dialog.visible = visible;
}

/// Removes a dialog that has been added at the end of its scope.
struct Remover {
    void operator()(Dialog* dialog) const {
        Remove(*dialog);
        delete dialog;
    }
};
using AddedDialog = std::unique_ptr<Dialog, Remover>;

/// A dialog that has got WM_INITDIALOG; null on failure.
AddedDialog Create(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                   LPARAM parameter, bool isModal) {
    const DialogTemplate* form = FindDialog(instance, number);
    RECT at{};
    if (form == nullptr || !ResolveOwner(owner, at)) {
        return nullptr;
    }
    if (procedure == nullptr) {
        return Fail<AddedDialog>(ERROR_INVALID_PARAMETER, nullptr);
    }
    std::unique_ptr<Dialog> made = MakeDialog(*form, owner, at, procedure);
    Add(*made);
    AddedDialog dialog(made.release());
    dialog->disabledOwner = isModal && owner != nullptr && EnableWindow(owner, FALSE) == FALSE;
    const auto focus = reinterpret_cast<WPARAM>(ControlHandle(*dialog, 0));
    SendToDialog(*dialog, WM_INITDIALOG, focus, parameter);
    if (!dialog->ended && (isModal || (form->style & WS_VISIBLE) != 0)) {
        Show(*dialog, true);
    }
    return dialog;
}

/// What every dialog does with a message that its procedure leaves alone.
void DoDefault(Dialog& dialog, UINT message) {
    if (message != WM_CLOSE) {
        return;
    }
    const auto cancel = std::ranges::find(dialog.controls, IDCANCEL, &Control::id);
    if (cancel == dialog.controls.end() || cancel->enabled) {
        const HWND control = GetDlgItem(dialog.handle, IDCANCEL);
        PostMessageW(dialog.handle, WM_COMMAND, IDCANCEL, reinterpret_cast<LPARAM>(control));
    }
}

}  // namespace

LRESULT SendToDialog(Dialog& dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const INT_PTR handled = dialog.procedure(dialog.handle, message, wParam, lParam);
    if (message == WM_INITDIALOG) {
        return handled;
    }
    if (handled == FALSE) {
        DoDefault(dialog, message);
    }
    return 0;
}

}  // namespace posix

INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter) {
    return posix::Guarded(INT_PTR{-1}, [&]() -> INT_PTR {
        posix::SetError(ERROR_SUCCESS);
        const posix::AddedDialog dialog =
            posix::Create(instance, number, owner, procedure, parameter, true);
        if (dialog == nullptr) {
            return GetLastError() == ERROR_INVALID_WINDOW_HANDLE ? 0 : -1;
        }
        while (!dialog->ended) {
            posix::ServeOne(posix::Never);
        }
        posix::SendToDialog(*dialog, WM_DESTROY, 0, 0);
        return dialog->result;
    });
}

HWND CreateDialogParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter) {
    return posix::Guarded(HWND{nullptr}, [&]() -> HWND {
        posix::AddedDialog dialog =
            posix::Create(instance, number, owner, procedure, parameter, false);
        return dialog == nullptr ? nullptr : dialog.release()->handle;
    });
}

BOOL EndDialog(HWND handle, INT_PTR result) {
    return static_cast<BOOL>(posix::OnDialog(handle, [result](posix::Dialog& dialog) {
        bool enableOwner = false;
        {
            const std::lock_guard hold(posix::desktop);
            dialog.result = result;
            dialog.ended = true;
            dialog.visible = false;
            std::swap(enableOwner, dialog.disabledOwner);
        }
        if (enableOwner) {
            EnableWindow(dialog.owner, TRUE);
        }
        return TRUE;
    }));
}

BOOL SetWindowPos(HWND handle, HWND after, int x, int y, int width, int height, UINT flags) {
    constexpr UINT Known = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER;
    const bool isOrdered = (flags & SWP_NOZORDER) == 0;
    if ((flags & ~Known) != 0 || (isOrdered && after != HWND_TOPMOST)) {
        return posix::Fail(ERROR_NOT_SUPPORTED);
    }
    return static_cast<BOOL>(posix::OnDialog(handle, [=](posix::Dialog& dialog) {
        const std::lock_guard hold(posix::desktop);
        RECT& place = dialog.place;
        if ((flags & SWP_NOSIZE) == 0) {
            place.right = place.left + width;
            place.bottom = place.top + height;
        }
        if ((flags & SWP_NOMOVE) == 0) {
            place = posix::Moved(place, x - place.left, y - place.top);
        }
        dialog.topmost = dialog.topmost || isOrdered;
        return TRUE;
    }));
}

BOOL ShowWindow(HWND handle, int command) {
    if (command != SW_HIDE && command != SW_SHOWNORMAL) {
        return posix::Fail(ERROR_NOT_SUPPORTED);
    }
    return static_cast<BOOL>(posix::OnDialog(handle, [command](posix::Dialog& dialog) {
        const BOOL before = dialog.visible ? TRUE : FALSE;
        posix::Show(dialog, command == SW_SHOWNORMAL);
        const std::lock_guard hold(posix::desktop);
        dialog.timesActivated += command == SW_SHOWNORMAL ? 1 : 0;
        return before;
    }));
}
