#include "native/machine.h"
#include "support/window.h"

namespace test_support {

struct Window::State {
    explicit State(LPCWSTR text) : title(text) {}
    WindowTitle title;
};

Window::Window(LPCWSTR title) : state_(std::make_unique<State>(title)) {}

Window::~Window() = default;

}  // namespace test_support
