#include "host/panel_window.h"
#include "native/headless.h"
#include "resources/resource_ids.h"

namespace host_tool {

using namespace std::chrono_literals;

HWND FindPanel() {
    for (const headless::DialogView& dialog : headless::OpenDialogs()) {
        if (dialog.resource == IDD_PANEL) {
            return dialog.window;
        }
    }
    return nullptr;
}

bool IsShown(HWND panel) {
    const auto view = headless::ViewOf(panel);
    return view && view->visible;
}

std::vector<PanelControl> ControlsOf(HWND panel) {
    std::vector<PanelControl> controls;
    if (const auto view = headless::ViewOf(panel)) {
        for (const headless::ControlView& control : view->controls) {
            controls.push_back({control.id, control.className == "Button",
                                control.className == "Edit", control.text});
        }
    }
    return controls;
}

void TypeInto(HWND panel, int box, const std::string& text) {
    headless::TypeText(panel, box, text);
}

void PressButton(HWND panel, int button) {
    SendMessageW(panel, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

void ServeWindows(HWND, const std::function<bool()>& done) {
    while (!headless::RunMessages(done, 1h)) {
    }
}

bool PanelNeedsKeyboard() {
    return true;
}

}  // namespace host_tool
