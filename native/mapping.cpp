#include <fcntl.h>
#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <mutex>
#include <string>

#include "native/shared_object.h"

namespace posix {
namespace {

class Mapping : public Object {
  public:
    static constexpr Kind OwnKind = Kind::Mapping;

    explicit Mapping(std::unique_ptr<SharedMemory> memory)
        : Object(OwnKind), memory_(std::move(memory)) {}

    const SharedMemory& Memory() const { return *memory_; }

  private:
    const std::unique_ptr<SharedMemory> memory_;
};

struct View {
    void* address;
    std::size_t length;
};

constexpr std::size_t PageSize = 4096;

// Fixed and never ended: views may be taken by threads that outlive static objects.
constinit std::mutex viewsLock;
constinit std::array<View, 256> views{};

View* FindView(const void* address) {
    for (View& view : views) {
        if (view.address == address) {
            return &view;
        }
    }
    return nullptr;
}

/// The mapping's file once more, for a view: an opening of its own, since memory holds the opening
/// that it was mapped from, and the locks of the object's handles must go with the handles.
File OpenAgain(const SharedMemory& memory) {
    return File(
        open(("/proc/self/fd/" + std::to_string(memory.FileOf())).c_str(), O_RDWR | O_CLOEXEC));
}

void* Show(const SharedMemory& memory, int protection, std::size_t bytes) {
    const std::lock_guard hold(viewsLock);
    View* view = FindView(nullptr);
    if (view == nullptr) {
        return Fail(ERROR_NO_SYSTEM_RESOURCES, LPVOID{nullptr});
    }
    const File file = OpenAgain(memory);
    void* address =
        file ? mmap(nullptr, bytes, protection, MAP_SHARED, file.Get(), SharedMemory::HeaderSize)
             : MAP_FAILED;
    if (address == MAP_FAILED) {
        return Fail(ErrorOf(errno), LPVOID{nullptr});
    }
    *view = {.address = address, .length = bytes};
    return address;
}

}  // namespace
}  // namespace posix

HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCWSTR name) {
    if (file != INVALID_HANDLE_VALUE || attributes != nullptr || protection != PAGE_READWRITE) {
        return posix::Fail(ERROR_NOT_SUPPORTED, HANDLE{nullptr});
    }
    if (sizeHigh != 0 || sizeLow == 0) {
        return posix::Fail(sizeHigh != 0 ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_PARAMETER,
                           HANDLE{nullptr});
    }
    return posix::Guarded(HANDLE{nullptr}, [&]() -> HANDLE {
        const std::size_t pages = (sizeLow + posix::PageSize - 1) / posix::PageSize;
        auto memory =
            posix::OpenShared(name, posix::Kind::Mapping, pages * posix::PageSize, [](void*) {});
        return memory == nullptr
                   ? nullptr
                   : posix::NewHandle(std::make_unique<posix::Mapping>(std::move(memory)));
    });
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T bytes) {
    const posix::UseOf<posix::Mapping> use(mapping);
    if (!use) {
        return nullptr;
    }
    if (offsetHigh != 0 || offsetLow != 0 || ((access & (FILE_MAP_READ | FILE_MAP_WRITE)) == 0)) {
        return posix::Fail(ERROR_NOT_SUPPORTED, LPVOID{nullptr});
    }
    const std::size_t size = use->Memory().BodySize();
    if (bytes > size) {
        return posix::Fail(ERROR_ACCESS_DENIED, LPVOID{nullptr});
    }
    const int protection = access == FILE_MAP_READ ? PROT_READ : PROT_READ | PROT_WRITE;
    return posix::Guarded(LPVOID{nullptr}, [&] {
        return posix::Show(use->Memory(), protection, bytes == 0 ? size : bytes);
    });
}

BOOL UnmapViewOfFile(LPCVOID view) {
    const std::lock_guard hold(posix::viewsLock);
    posix::View* found = view == nullptr ? nullptr : posix::FindView(view);
    if (found == nullptr) {
        return posix::Fail(ERROR_INVALID_ADDRESS);
    }
    munmap(found->address, found->length);
    *found = {};
    return TRUE;
}
