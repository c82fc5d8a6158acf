#include <iterator>

#include "host/panel_window.h"
#include "resources/resource_ids.h"

namespace host_tool {

namespace {

std::string TextOf(HWND window) {
    char text[512] = {};
    GetWindowTextA(window, text, static_cast<int>(std::size(text)));
    return text;
}

}  // namespace

HWND FindPanel() {
    const HWND panel = FindWindowW(nullptr, L"Mitutoyo QI");
    DWORD process = 0;
    const bool isOurs = panel != nullptr && GetWindowThreadProcessId(panel, &process) != 0 &&
                        process == GetCurrentProcessId() &&
                        GetDlgItem(panel, IDC_TARGET) != nullptr;
    return isOurs ? panel : nullptr;
}

bool IsShown(HWND panel) {
    return IsWindowVisible(panel) != FALSE;
}

std::vector<PanelControl> ControlsOf(HWND panel) {
    std::vector<PanelControl> controls;
    for (HWND window = GetWindow(panel, GW_CHILD); window != nullptr;
         window = GetWindow(window, GW_HWNDNEXT)) {
        char name[32] = {};
        GetClassNameA(window, name, static_cast<int>(std::size(name)));
        controls.push_back({GetDlgCtrlID(window), std::string(name) == "Button",
                            std::string(name) == "Edit", TextOf(window)});
    }
    return controls;
}

void TypeInto(HWND panel, int box, const std::string& text) {
    SetDlgItemTextA(panel, box, text.c_str());
}

void PressButton(HWND panel, int button) {
    SendMessageW(panel, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

void ServeWindows(HWND panel, const std::function<bool()>& done) {
    constexpr DWORD LoopPeriod = 100;
    while (!done()) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, LoopPeriod, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            if (IsDialogMessageW(panel, &message) == FALSE) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
    }
}

bool PanelNeedsKeyboard() {
    return false;
}

}  // namespace host_tool
