#include "host/dialog_view.h"
#include "native/headless.h"
#include "resources/resource_ids.h"

namespace host_tool {

namespace {

std::optional<headless::DialogView> Find() {
    for (const headless::DialogView& dialog : headless::OpenDialogs()) {
        if (dialog.visible &&
            (dialog.resource == IDD_MANUAL_HOMING || dialog.resource == IDD_AUTO_HOMING)) {
            return dialog;
        }
    }
    return std::nullopt;
}

const char* PictureText(int picture) {
    switch (picture) {
        case IDB_TABLE_LEFT:
            return "an arrow on the table to the left, the X knob turned";
        case IDB_TABLE_RIGHT:
            return "an arrow on the table to the right, the X knob turned";
        case IDB_TABLE_FRONT:
            return "an arrow on the table to the front, the Y knob turned";
        case IDB_TABLE_BACK:
            return "an arrow on the table to the back, the Y knob turned";
        case IDB_COLUMN_UP:
            return "an arrow along the column, upward";
        default:
            return "";
    }
}

}  // namespace

std::optional<DialogView> FindHomingDialog() {
    const auto dialog = Find();
    if (!dialog) {
        return std::nullopt;
    }
    const headless::ControlView* const text = dialog->Find(IDC_HOMING_TEXT);
    const headless::ControlView* const picture = dialog->Find(IDC_HOMING_PICTURE);
    const headless::ControlView* const ok = dialog->Find(IDOK);
    return DialogView{.caption = dialog->caption,
                      .text = text->text,
                      .picture = PictureText(picture->picture),
                      .okEnabled = ok->enabled};
}

void PressHomingButton(Button button) {
    if (const auto dialog = Find()) {
        if (button == Button::CloseBox) {
            PostMessageW(dialog->window, WM_CLOSE, 0, 0);
        } else {
            PostMessageW(dialog->window, WM_COMMAND, button == Button::Ok ? IDOK : IDCANCEL, 0);
        }
    }
}

bool DialogNeedsKeyboard() {
    return true;
}

}  // namespace host_tool
