#include <stdexcept>

#include "support/window.h"

namespace test_support {

struct Window::State {
    HWND window;
};

Window::Window(LPCWSTR title)
    : state_(std::make_unique<State>(
          State{CreateWindowExW(0, WIDE("STATIC"), title, WS_OVERLAPPEDWINDOW, 0, 0, 100, 100,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)})) {
    if (state_->window == nullptr) {
        throw std::runtime_error("no window");
    }
}

Window::~Window() {
    DestroyWindow(state_->window);
}

}  // namespace test_support
