#include <csignal>
#include <future>
#include <stdexcept>
#include <thread>

#include "log_viewer/channel.h"
#include "log_viewer/presence.h"

namespace log_viewer {

namespace {

constexpr const WCHAR* ClassName = L"OviskLogPresence";

LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
            // Somebody asks the program to end, as with Ctrl-C.
            std::raise(SIGINT);
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

/// Never shown; found by its title all the same.
HWND MakeWindow() {
    WNDCLASSW kind{};
    kind.lpfnWndProc = Handle;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = ClassName;
    RegisterClassW(&kind);
    return CreateWindowExW(0, ClassName, WindowTitleText, WS_OVERLAPPEDWINDOW, 0, 0, 100, 100,
                           nullptr, nullptr, kind.hInstance, nullptr);
}

/// The window's thread: a top-level window has to answer what is sent to all.
void Serve(std::promise<DWORD> ready) {
    const HWND window = MakeWindow();
    ready.set_value(window != nullptr ? GetCurrentThreadId() : 0);
    MSG message;
    while (window != nullptr && GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
}

}  // namespace

struct Presence::State {
    std::promise<DWORD> ready;
    std::future<DWORD> id{ready.get_future()};
    std::thread thread{Serve, std::move(ready)};
    DWORD threadId{id.get()};
};

Presence::Presence() : state_(std::make_unique<State>()) {
    if (state_->threadId == 0) {
        state_->thread.join();
        throw std::runtime_error("cannot make the viewer's window");
    }
}

Presence::~Presence() {
    PostThreadMessageW(state_->threadId, WM_QUIT, 0, 0);
    state_->thread.join();
}

}  // namespace log_viewer
