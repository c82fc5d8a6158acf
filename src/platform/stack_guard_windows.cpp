#include <cstdint>

#include "platform/win32.h"

// What the compiler's checks of stack and buffers ask of its run-time library. That library's own
// asks a crypto provider for the guard's value, which loads further libraries while the loader
// loads this.

namespace {

[[noreturn]] void EndProcess() {
    constexpr unsigned StackCookieCheckFailure = 2;  // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    asm volatile("int $0x29" : : "c"(StackCookieCheckFailure));
    __builtin_unreachable();
}

std::uintptr_t NewGuard() {
    FILETIME time{};
    LARGE_INTEGER counter{};
    GetSystemTimeAsFileTime(&time);
    QueryPerformanceCounter(&counter);
    const auto value = static_cast<std::uintptr_t>(counter.QuadPart) * 0x9E3779B97F4A7C15u ^
                       std::uintptr_t{time.dwLowDateTime} << 32 ^ GetCurrentProcessId() ^
                       reinterpret_cast<std::uintptr_t>(&counter);
    // A zero first: no text that is written past its end can carry the guard along.
    return value << 8;
}

}  // namespace

extern "C" {

std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
    EndProcess();
}

[[noreturn]] void __chk_fail() {
    EndProcess();
}
}

namespace {

/// Before all other initialisation. Not guarded itself: the value changes while it runs.
[[gnu::constructor(101), gnu::no_stack_protector]] void SetGuard() {
    __stack_chk_guard = NewGuard();
}

}  // namespace
