#include "host/dialog_view.h"
#include "platform/win32.h"
#include "resources/resource_ids.h"

namespace host_tool {

namespace {

HWND Find() {
    for (const WCHAR* caption : {L"Axis Homing In Progress", L"Warning"}) {
        const HWND dialog = FindWindowW(nullptr, caption);
        DWORD process = 0;
        if (dialog != nullptr && GetWindowThreadProcessId(dialog, &process) != 0 &&
            process == GetCurrentProcessId() && GetDlgItem(dialog, IDC_HOMING_TEXT) != nullptr) {
            return dialog;
        }
    }
    return nullptr;
}

}  // namespace

std::optional<DialogView> FindHomingDialog() {
    const HWND dialog = Find();
    if (dialog == nullptr) {
        return std::nullopt;
    }
    char caption[256] = {};
    char text[1024] = {};
    GetWindowTextA(dialog, caption, sizeof(caption));
    GetDlgItemTextA(dialog, IDC_HOMING_TEXT, text, sizeof(text));
    return DialogView{.caption = caption,
                      .text = text,
                      .picture = {},
                      .okEnabled = IsWindowEnabled(GetDlgItem(dialog, IDOK)) != FALSE};
}

void PressHomingButton(Button button) {
    if (const HWND dialog = Find()) {
        if (button == Button::CloseBox) {
            PostMessageW(dialog, WM_CLOSE, 0, 0);
        } else {
            PostMessageW(dialog, WM_COMMAND, button == Button::Ok ? IDOK : IDCANCEL, 0);
        }
    }
}

bool DialogNeedsKeyboard() {
    return false;
}

}  // namespace host_tool
