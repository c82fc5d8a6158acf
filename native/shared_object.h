#pragma once

#include <memory>

#include "native/handle.h"
#include "native/machine.h"

namespace posix {

/// A piece of memory that stands behind a named object, or an unnamed one: a file in the machine's
/// objects folder, a page of the layer's own before the piece. Every opener holds a shared lock on
/// the file, so the next opener that finds itself alone knows that all others are gone, ended or
/// killed, and starts anew.
class SharedMemory {
  public:
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    void* Body() const { return static_cast<char*>(address_) + HeaderSize; }
    std::size_t BodySize() const { return length_ - HeaderSize; }
    int FileOf() const { return file_.Get(); }

    /// Lets go of the name, but leaves the memory in place for the rest of the process.
    void Abandon();

    static constexpr std::size_t HeaderSize = 4096;

  private:
    template <typename Setup>
    friend std::unique_ptr<SharedMemory> OpenShared(LPCWSTR name, Kind kind, std::size_t size,
                                                    const Setup& setup);
    struct Header {
        Kind kind;
    };

    SharedMemory() = default;

    /// Opens or makes the file and maps it; 0 with `made_` set, or the error code.
    DWORD Open(LPCWSTR name, Kind kind, std::size_t size);
    DWORD Attach(const std::string& path, Kind kind, std::size_t size);
    DWORD MakeNew(File file, Kind kind, std::size_t size);
    DWORD Map();

    File file_;
    File creationLock_;
    void* address_ = nullptr;
    std::size_t length_ = 0;
    bool made_ = false;
};

/// Opens or makes the object of this name (null or empty: a new unnamed one) with `size` bytes of
/// zeros, a new one set up by `setup(body)` before anybody else sees it. Leaves 0 or
/// ERROR_ALREADY_EXISTS for GetLastError; null with another code on failure.
template <typename Setup>
std::unique_ptr<SharedMemory> OpenShared(LPCWSTR name, Kind kind, std::size_t size,
                                         const Setup& setup) {
    std::unique_ptr<SharedMemory> memory(new SharedMemory);
    const DWORD error = memory->Open(name, kind, size);
    if (error != ERROR_SUCCESS) {
        return Fail(error, std::unique_ptr<SharedMemory>());
    }
    if (memory->made_) {
        setup(memory->Body());
    }
    memory->creationLock_ = File();
    SetError(memory->made_ ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
    return memory;
}

}  // namespace posix
