#pragma once

#include <memory>

#include "platform/win32.h"

namespace test_support {

/// A top-level window with a title, as FindWindowW sees it; on Windows a real one, never shown.
class Window {
  public:
    explicit Window(LPCWSTR title);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace test_support
