#include "support/dialog_driver.h"

#include <stdexcept>

namespace test_support {

DialogDriver::DialogDriver(const std::string& caption, std::chrono::milliseconds limit)
    : window_(nullptr) {
    const std::basic_string<WCHAR> wide(caption.begin(), caption.end());
    const bool isFound = WaitUntil(
        [&] {
            window_ = FindWindowW(nullptr, wide.c_str());
            return window_ != nullptr && IsVisible();
        },
        limit);
    if (!isFound) {
        throw std::runtime_error("no dialog " + caption);
    }
}

bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(limit.count());
    while (!done()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(1);
    }
    return true;
}

}  // namespace test_support
