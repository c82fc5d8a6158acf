#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/win32.h"

/// The machine that the layer imitates. For tools and tests, not for the product.

/// The machine's folder: drive_c/ is C:, dosdevices/com<n> are links to its serial ports, objects/
/// belongs to the layer. Named by the environment variable ZB_MACHINE_ROOT, else
/// $HOME/.zb_machine; read once, when first asked for, and made if it does not exist.
/// Throws std::runtime_error if it has no name and std::filesystem::filesystem_error if it cannot
/// be made.
const std::string& MachineRoot();

/// A top-level window's title, for as long as this object lives: FindWindowW of every process of
/// the same machine finds it. It is gone with the process, however that ends.
class WindowTitle {
  public:
    /// `window` is what FindWindowW gives, a handle of its own making if null. Throws
    /// std::length_error for more than 124 characters and std::runtime_error if the machine already
    /// has 64 windows.
    explicit WindowTitle(std::u16string_view title, HWND window = nullptr);
    ~WindowTitle();
    WindowTitle(const WindowTitle&) = delete;
    WindowTitle& operator=(const WindowTitle&) = delete;

  private:
    int file_;
    unsigned slot_ = 0;
};

namespace posix {

/// The path of one of the layer's own files, in a folder that exists.
std::string ObjectPath(std::string_view name);

/// The native path of a path on drive C:, without regard to case; empty if it names no such place.
/// A component that does not exist is taken as written.
std::string NativePath(std::u16string_view path);

/// A file descriptor that is closed at the end of its scope.
class File {
  public:
    explicit File(int descriptor = -1) : descriptor_(descriptor) {}
    ~File();
    File(File&& other) noexcept : descriptor_(other.Release()) {}
    File& operator=(File&& other) noexcept;

    int Get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    int Release();

  private:
    int descriptor_;
};

}  // namespace posix
