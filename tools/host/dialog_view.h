#pragma once

#include <optional>
#include <string>

namespace host_tool {

/// A homing dialog as its user sees it.
struct DialogView {
    std::string caption;
    std::string text;
    std::string picture;  ///< what it shows; empty where the platform can't tell
    bool okEnabled = false;

    bool operator==(const DialogView&) const = default;
};

/// The homing dialog that is open; one implementation per platform. Any thread but the dialog's.
std::optional<DialogView> FindHomingDialog();

enum class Button { Ok, Cancel, CloseBox };

/// Presses a button of the dialog that is open. Does nothing without one.
void PressHomingButton(Button button);

/// Whether a person needs this tool's keyboard to operate the dialog.
bool DialogNeedsKeyboard();

}  // namespace host_tool
