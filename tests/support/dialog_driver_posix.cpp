#include "native/headless.h"
#include "support/dialog_driver.h"

namespace test_support {
namespace {

headless::ControlView ControlOf(HWND window, int id) {
    const auto dialog = headless::ViewOf(window);
    const headless::ControlView* control = dialog ? dialog->Find(id) : nullptr;
    return control == nullptr ? headless::ControlView{} : *control;
}

}  // namespace

bool DialogDriver::Exists() const {
    return headless::ViewOf(window_).has_value();
}

bool DialogDriver::IsVisible() const {
    const auto view = headless::ViewOf(window_);
    return view && view->visible;
}

bool DialogDriver::AcceptsInput() const {
    const auto view = headless::ViewOf(window_);
    return view && view->enabled;
}

std::string DialogDriver::Caption() const {
    const auto view = headless::ViewOf(window_);
    return view ? view->caption : "";
}

std::string DialogDriver::Text(int control) const {
    return ControlOf(window_, control).text;
}

bool DialogDriver::IsEnabled(int control) const {
    return ControlOf(window_, control).enabled;
}

int DialogDriver::Picture(int control) const {
    return ControlOf(window_, control).picture;
}

int DialogDriver::PictureHeight(int control) const {
    return ControlOf(window_, control).pictureHeight;
}

bool RunMessages(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    return headless::RunMessages(done, limit);
}

HINSTANCE ResourceInstance() {
    return nullptr;
}

}  // namespace test_support
