#include <array>
#include <vector>

#include "resources/resource_ids.h"
#include "support/dialog_driver.h"

namespace test_support {
namespace {

std::string TextOf(HWND window) {
    std::array<char, 512> text{};
    const int count = GetWindowTextA(window, text.data(), static_cast<int>(text.size()));
    return {text.data(), static_cast<std::size_t>(count)};
}

HBITMAP ShownIn(HWND dialog, int control) {
    return reinterpret_cast<HBITMAP>(
        SendDlgItemMessageW(dialog, control, STM_GETIMAGE, IMAGE_BITMAP, 0));
}

BITMAP SizeOf(HBITMAP picture) {
    BITMAP size{};
    GetObjectW(picture, sizeof size, &size);
    return size;
}

std::vector<char> PixelsOf(HBITMAP picture) {
    const BITMAP size = SizeOf(picture);
    std::vector<char> pixels(static_cast<std::size_t>(size.bmWidthBytes * size.bmHeight));
    GetBitmapBits(picture, static_cast<LONG>(pixels.size()), pixels.data());
    return pixels;
}

bool ShowsPicture(const std::vector<char>& pixels, int number) {
    const HBITMAP picture = LoadBitmapW(ResourceInstance(), MAKEINTRESOURCEW(number));
    const bool isSame = pixels == PixelsOf(picture);
    DeleteObject(picture);
    return isSame;
}

}  // namespace

bool DialogDriver::Exists() const {
    return IsWindow(window_) != FALSE;
}

bool DialogDriver::IsVisible() const {
    return IsWindowVisible(window_) != FALSE;
}

bool DialogDriver::AcceptsInput() const {
    return IsWindowEnabled(window_) != FALSE;
}

std::string DialogDriver::Caption() const {
    return TextOf(window_);
}

std::string DialogDriver::Text(int control) const {
    return TextOf(GetDlgItem(window_, control));
}

bool DialogDriver::IsEnabled(int control) const {
    return IsWindowEnabled(GetDlgItem(window_, control)) != FALSE;
}

int DialogDriver::Picture(int control) const {
    const HBITMAP picture = ShownIn(window_, control);
    if (picture != nullptr) {
        const std::vector<char> pixels = PixelsOf(picture);
        for (int number = IDB_TABLE_LEFT; number <= IDB_COLUMN_UP; ++number) {
            if (ShowsPicture(pixels, number)) {
                return number;
            }
        }
    }
    return 0;
}

int DialogDriver::PictureHeight(int control) const {
    return SizeOf(ShownIn(window_, control)).bmHeight;
}

bool RunMessages(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    constexpr DWORD LoopPeriod = 10;
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(limit.count());
    while (!done()) {
        if (GetTickCount64() >= end) {
            return false;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, LoopPeriod, QS_ALLINPUT);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return true;
}

HINSTANCE ResourceInstance() {
    const HINSTANCE library = GetModuleHandleW(L"ZbOvisk.dll");
    return library != nullptr ? library : GetModuleHandleW(nullptr);
}

}  // namespace test_support
