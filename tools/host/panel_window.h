#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace host_tool {

// The module's diagnostic panel from outside; one implementation per platform.

struct PanelControl {
    int id;
    bool isButton;
    bool isBox;
    std::string text;
};

/// This process's panel; null if the module made none.
HWND FindPanel();
bool IsShown(HWND panel);
/// The panel's buttons and boxes, in its order. Any thread, while the panel's thread serves it.
std::vector<PanelControl> ControlsOf(HWND panel);
/// Both return when the panel has done it. Any thread but the panel's.
void TypeInto(HWND panel, int box, const std::string& text);
void PressButton(HWND panel, int button);

/// Serves the calling thread's windows, with the panel's keyboard, until `done`, which is asked
/// about ten times a second.
void ServeWindows(HWND panel, const std::function<bool()>& done);

/// Whether a person needs this tool's keyboard to operate the panel.
bool PanelNeedsKeyboard();

}  // namespace host_tool
