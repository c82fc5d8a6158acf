#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <mutex>
#include <stdexcept>

#include "native/handle.h"
#include "native/machine.h"
#include "native/wide_text.h"

namespace posix {
namespace {

constexpr unsigned WindowCount = 64;
constexpr std::size_t TitleSize = 125;

/// One window of the machine. Its owner holds a lock on the byte of the registry file that has the
/// slot's number, which the system takes away when the owner's process ends.
struct WindowSlot {
    std::atomic<std::uint32_t> sequence;  // One more with each window that takes the slot.
    std::atomic<std::uintptr_t> window;   // Its handle.
    std::array<std::atomic<char16_t>, TitleSize> title;
};

struct Page {
    std::atomic<std::uint64_t> taken;  // One bit per slot; that of a killed process may linger.
    std::array<WindowSlot, WindowCount> slots;
};

int OpenFile() {
    const int file = open(ObjectPath(".windows").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const int error = file < 0 ? errno : posix_fallocate(file, 0, sizeof(Page));
    if (error != 0) {
        if (file >= 0) {
            close(file);
        }
        return -1;
    }
    return file;
}

/// The registry as this process sees it: opened at the first use, and there until the process has
/// ended, since threads may still run then.
class Registry {
  public:
    /// Null if it cannot be opened.
    Page* Get() {
        Page* page = page_.load(std::memory_order_acquire);
        return page != nullptr ? page : Open();
    }

    /// Whether the owner of a slot is alive.
    bool IsOwned(unsigned slot) const {
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_start = slot;
        range.l_len = 1;
        return fcntl(file_, F_OFD_GETLK, &range) == 0 && range.l_type != F_UNLCK;
    }

  private:
    Page* Open() {
        const std::lock_guard hold(lock_);
        if (page_.load(std::memory_order_relaxed) == nullptr) {
            File file(OpenFile());
            void* address = file ? mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_SHARED,
                                        file.Get(), 0)
                                 : MAP_FAILED;
            if (address == MAP_FAILED) {
                return nullptr;
            }
            file_ = file.Release();
            page_.store(static_cast<Page*>(address), std::memory_order_release);
        }
        return page_.load(std::memory_order_relaxed);
    }

    std::mutex lock_;
    std::atomic<Page*> page_{nullptr};
    int file_ = -1;
};

constinit Registry registry;

bool HasTitle(const WindowSlot& slot, const WCHAR* title) {
    for (std::size_t i = 0; i < TitleSize; ++i) {
        const char16_t letter = slot.title[i].load(std::memory_order_relaxed);
        if (Folded(letter) != Folded(title[i])) {
            return false;
        }
        if (letter == 0) {
            return true;
        }
    }
    return false;
}

/// A handle that differs from those of the slot's earlier windows.
HWND WindowOf(unsigned slot, std::uint32_t sequence) {
    return reinterpret_cast<HWND>((std::uintptr_t{sequence & 0xFFFFU} << 16) | ((slot + 1U) << 2));
}

HWND Find(const WCHAR* title) {
    Page* page = registry.Get();
    if (page == nullptr) {
        return nullptr;
    }
    std::uint64_t left = page->taken.load(std::memory_order_acquire);
    for (; left != 0; left &= left - 1) {
        const auto number = static_cast<unsigned>(std::countr_zero(left));
        const WindowSlot& slot = page->slots[number];
        const std::uint32_t sequence = slot.sequence.load(std::memory_order_acquire);
        const auto window = reinterpret_cast<HWND>(slot.window.load(std::memory_order_relaxed));
        if (HasTitle(slot, title) && registry.IsOwned(number) &&
            slot.sequence.load(std::memory_order_acquire) == sequence) {
            return window;
        }
    }
    return nullptr;
}

/// Takes the first slot that nobody owns; its number, or WindowCount.
unsigned Claim(int file) {
    for (unsigned slot = 0; slot < WindowCount; ++slot) {
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_start = slot;
        range.l_len = 1;
        if (fcntl(file, F_OFD_SETLK, &range) == 0) {
            return slot;
        }
    }
    return WindowCount;
}

}  // namespace
}  // namespace posix

WindowTitle::WindowTitle(std::u16string_view title, HWND window) : file_(-1) {
    if (title.size() >= posix::TitleSize) {
        throw std::length_error("window title");
    }
    posix::Page* page = posix::registry.Get();
    posix::File file(posix::OpenFile());
    slot_ = page != nullptr && file ? posix::Claim(file.Get()) : posix::WindowCount;
    if (slot_ == posix::WindowCount) {
        throw std::runtime_error("no room for a window title");
    }
    const std::uint64_t bit = std::uint64_t{1} << slot_;
    page->taken.fetch_and(~bit);
    posix::WindowSlot& slot = page->slots[slot_];
    const std::uint32_t sequence = slot.sequence.fetch_add(1) + 1;
    const HWND found = window != nullptr ? window : posix::WindowOf(slot_, sequence);
    slot.window.store(reinterpret_cast<std::uintptr_t>(found), std::memory_order_relaxed);
    for (std::size_t i = 0; i < title.size(); ++i) {
        slot.title[i].store(title[i], std::memory_order_relaxed);
    }
    slot.title[title.size()].store(0, std::memory_order_relaxed);
    page->taken.fetch_or(bit);
    file_ = file.Release();
}

WindowTitle::~WindowTitle() {
    posix::Page* page = posix::registry.Get();
    if (page != nullptr) {
        page->taken.fetch_and(~(std::uint64_t{1} << slot_));
    }
    close(file_);
}

HWND FindWindowW(LPCWSTR className, LPCWSTR title) {
    if (className != nullptr || title == nullptr) {
        return posix::Fail(ERROR_NOT_SUPPORTED, HWND{nullptr});
    }
    return posix::Guarded(HWND{nullptr}, [&] { return posix::Find(title); });
}
