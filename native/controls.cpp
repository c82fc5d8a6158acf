#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "native/handle.h"
#include "native/pictures.h"
#include "native/wide_text.h"
#include "native/window.h"

namespace posix {
namespace {

constexpr DWORD SS_TYPEMASK = 0x1F;
constexpr DWORD SS_BITMAP = 0x0E;
constexpr DWORD ES_MULTILINE = 0x0004;
constexpr unsigned NotificationShift = 16;

BOOL OnControl(HWND dialog, int id, const std::function<BOOL(const Window&)>& work) {
    return Guarded(FALSE, [&] {
        const HWND control = GetDlgItem(dialog, id);
        return control == nullptr ? FALSE : static_cast<BOOL>(OnOwner(control, work));
    });
}

/// Tells a dialog of a change in one of its controls.
void Notify(const Window& window, WORD code) {
    const Dialog& dialog = *window.dialog;
    const auto index = static_cast<std::size_t>(window.control - dialog.controls.data());
    const auto id = static_cast<WPARAM>(LOWORD(static_cast<std::uintptr_t>(window.control->id)));
    SendToDialog(*window.dialog, WM_COMMAND, id | WPARAM{code} << NotificationShift,
                 reinterpret_cast<LPARAM>(ControlHandle(dialog, index)));
}

BOOL SetControlText(const Window& window, const std::u16string& text) {
    Control& control = *window.control;
    {
        const std::lock_guard hold(desktop);
        control.text = text;
    }
    if (control.className == u"Edit" && (control.style & ES_MULTILINE) == 0) {
        Notify(window, EN_UPDATE);
        Notify(window, EN_CHANGE);
    }
    return TRUE;
}

BOOL SetCaption(Dialog& dialog, const std::u16string& text) {
    // The new title comes before the old one goes: the dialog is always found.
    auto title = std::make_unique<WindowTitle>(text, dialog.handle);
    const std::lock_guard hold(desktop);
    dialog.caption = text;
    dialog.title.swap(title);
    return TRUE;
}

LRESULT SetPicture(Control& control, HBITMAP picture) {
    const bool showsBitmaps =
        control.className == u"Static" && (control.style & SS_TYPEMASK) == SS_BITMAP;
    const std::optional<PictureTemplate> shown = PictureOf(picture);
    if (!showsBitmaps || (picture != nullptr && !shown)) {
        return 0;
    }
    const std::lock_guard hold(desktop);
    if (shown) {
        control.place.right = control.place.left + shown->width;
        control.place.bottom = control.place.top + shown->height;
    }
    return reinterpret_cast<LRESULT>(std::exchange(control.picture, picture));
}

/// The number at the start of a text, if it has one that fits.
struct Number {
    UINT value = 0;
    bool isValid = false;
};

Number ReadNumber(std::u16string_view text, bool isSigned) {
    const auto take = [&text](auto isWanted) {
        const bool is = !text.empty() && isWanted(text.front());
        text.remove_prefix(is ? 1 : 0);
        return is;
    };
    while (take([](char16_t one) { return one == ' ' || (one >= '\t' && one <= '\r'); })) {
    }
    const bool isNegative = isSigned && take([](char16_t one) { return one == '-'; });
    if (!isNegative) {
        take([](char16_t one) { return one == '+'; });
    }
    constexpr std::int64_t Most = std::numeric_limits<UINT>::max();
    const std::int64_t most =
        isSigned ? std::int64_t{std::numeric_limits<int>::max()} + (isNegative ? 1 : 0) : Most;
    std::int64_t value = 0;
    bool isValid = false;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
        value = std::min(value * 10 + (text.front() - '0'), Most + 1);
        isValid = true;
    }
    if (!isValid || value > most) {
        return {};
    }
    return {.value = static_cast<UINT>(isNegative ? -value : value), .isValid = true};
}

}  // namespace

LRESULT SendToControl(Control& control, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != STM_SETIMAGE || wParam != IMAGE_BITMAP) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    return SetPicture(control, reinterpret_cast<HBITMAP>(lParam));
}

}  // namespace posix

HWND GetDlgItem(HWND dialog, int id) {
    const std::lock_guard hold(posix::desktop);
    const posix::Window window = posix::Find(dialog);
    if (!window) {
        return nullptr;
    }
    const auto& controls = window.dialog->controls;
    const auto found = std::ranges::find(controls, id, &posix::Control::id);
    if (window.control != nullptr || found == controls.end()) {
        return posix::Fail(ERROR_CONTROL_ID_NOT_FOUND, HWND{nullptr});
    }
    return posix::ControlHandle(*window.dialog, static_cast<std::size_t>(found - controls.begin()));
}

BOOL SetWindowTextW(HWND handle, LPCWSTR text) {
    return posix::Guarded(FALSE, [&] {
        const std::u16string copy(text == nullptr ? u"" : text);
        return static_cast<BOOL>(posix::OnOwner(handle, [&](const posix::Window& window) {
            return posix::Guarded(FALSE, [&] {
                return window.control != nullptr ? posix::SetControlText(window, copy)
                                                 : posix::SetCaption(*window.dialog, copy);
            });
        }));
    });
}

BOOL EnableWindow(HWND handle, BOOL enable) {
    return posix::Guarded(FALSE, [&] {
        return static_cast<BOOL>(posix::OnOwner(handle, [enable](const posix::Window& window) {
            const std::lock_guard hold(posix::desktop);
            bool& enabled =
                window.control != nullptr ? window.control->enabled : window.dialog->enabled;
            return std::exchange(enabled, enable != FALSE) ? FALSE : TRUE;
        }));
    });
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    const HWND control = GetDlgItem(dialog, id);
    return control == nullptr ? FALSE : SetWindowTextW(control, text);
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    return posix::Guarded(FALSE, [&] {
        const std::u16string wide = posix::FromAnsi(text == nullptr ? "" : text);
        return SetDlgItemTextW(dialog, id, wide.c_str());
    });
}

UINT GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size) {
    if (buffer == nullptr || size <= 0) {
        return 0;
    }
    buffer[0] = '\0';
    std::string text;
    const BOOL isRead = posix::OnControl(dialog, id, [&](const posix::Window& window) {
        text = posix::ToAnsi(window.control->text);
        return TRUE;
    });
    if (isRead == FALSE) {
        return 0;
    }
    const std::size_t count = text.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[count] = '\0';
    return static_cast<UINT>(count);
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) {
    return SetDlgItemTextA(
        dialog, id,
        (isSigned != FALSE ? std::to_string(static_cast<int>(value)) : std::to_string(value))
            .c_str());
}

UINT GetDlgItemInt(HWND dialog, int id, LPBOOL translated, BOOL isSigned) {
    posix::Number number;
    posix::OnControl(dialog, id, [&](const posix::Window& window) {
        number = posix::ReadNumber(window.control->text, isSigned != FALSE);
        return TRUE;
    });
    if (translated != nullptr) {
        *translated = number.isValid ? TRUE : FALSE;
    }
    return number.value;
}
