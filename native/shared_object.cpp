#include "native/shared_object.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "native/wide_text.h"

namespace posix {
namespace {

constexpr mode_t Access = 0600;

int Lock(int file, int operation) {
    int result = 0;
    do {
        result = flock(file, operation);
    } while (result != 0 && errno == EINTR);
    return result;
}

/// The name without the namespace in front of it, which is the whole machine here in both cases.
std::u16string_view WithoutNamespace(std::u16string_view name) {
    for (const std::u16string_view space : {u"Local\\", u"Global\\"}) {
        if (name.starts_with(space)) {
            return name.substr(space.size());
        }
    }
    return name;
}

/// A file name for an object's name: letters, digits and '_' as they are, all else as its number,
/// in folders of at most 200 characters since a file's name has a limit.
std::string EncodedPath(std::u16string_view name) {
    constexpr std::string_view Hex = "0123456789abcdef";
    constexpr std::size_t PartLimit = 200;
    std::string path;
    std::size_t part = 0;
    for (const char16_t letter : name) {
        if (part >= PartLimit) {
            path += "+/";
            part = 0;
        }
        const char16_t small = Folded(letter);
        if ((small >= 'a' && small <= 'z') || (small >= '0' && small <= '9') || small == '_') {
            path += static_cast<char>(letter);
            ++part;
        } else {
            const unsigned code = letter;
            path += {'%', Hex[code >> 12], Hex[(code >> 8) & 15], Hex[(code >> 4) & 15],
                     Hex[code & 15]};
            part += 5;
        }
    }
    return ObjectPath(path);
}

/// Makes the folders of an encoded path; those of the machine are there.
void MakeFolders(const std::string& path) {
    for (std::size_t at = path.find("+/"); at != std::string::npos; at = path.find("+/", at + 2)) {
        mkdir(path.substr(0, at + 1).c_str(), 0700);
    }
}

}  // namespace

SharedMemory::~SharedMemory() {
    if (address_ != nullptr) {
        munmap(address_, length_);
    }
}

void SharedMemory::Abandon() {
    // Memory holds the opening that it was mapped from, and so its lock too.
    Lock(file_.Get(), LOCK_UN);
    address_ = nullptr;
}

DWORD SharedMemory::Open(LPCWSTR name, Kind kind, std::size_t size) {
    if (name == nullptr || *name == 0) {
        return MakeNew(File(memfd_create("zb_object", MFD_CLOEXEC)), kind, size);
    }
    const std::u16string_view plain = WithoutNamespace(name);
    if (std::u16string_view(name).size() > MAX_PATH) {
        return ERROR_FILENAME_EXCED_RANGE;
    }
    if (plain.find(u'\\') != std::u16string_view::npos) {
        return ERROR_PATH_NOT_FOUND;
    }
    creationLock_ = File(open(ObjectPath(".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, Access));
    if (!creationLock_ || Lock(creationLock_.Get(), LOCK_EX) != 0) {
        return ErrorOf(errno);
    }
    return Attach(EncodedPath(plain), kind, size);
}

DWORD SharedMemory::Attach(const std::string& path, Kind kind, std::size_t size) {
    File file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    if (file && Lock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
        file_ = std::move(file);
        if (Lock(file_.Get(), LOCK_SH) != 0) {
            return ErrorOf(errno);
        }
        const DWORD error = Map();
        const bool sameKind = error == 0 && static_cast<Header*>(address_)->kind == kind;
        return error != 0 || sameKind ? error : ERROR_INVALID_HANDLE;
    }
    // A new file rather than the old one: a mapping that outlived its object may still be there.
    unlink(path.c_str());
    MakeFolders(path);
    return MakeNew(File(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, Access)), kind,
                   size);
}

DWORD SharedMemory::MakeNew(File file, Kind kind, std::size_t size) {
    if (!file || Lock(file.Get(), LOCK_SH) != 0) {
        return ErrorOf(errno);
    }
    // Real space, not a hole: a full disk shows here and not as a signal at some later store.
    const int error = posix_fallocate(file.Get(), 0, static_cast<off_t>(HeaderSize + size));
    if (error != 0) {
        return ErrorOf(error);
    }
    file_ = std::move(file);
    const DWORD failed = Map();
    if (failed == ERROR_SUCCESS) {
        static_cast<Header*>(address_)->kind = kind;
        made_ = true;
    }
    return failed;
}

DWORD SharedMemory::Map() {
    struct stat status {};
    if (fstat(file_.Get(), &status) != 0) {
        return ErrorOf(errno);
    }
    length_ = static_cast<std::size_t>(status.st_size);
    if (length_ <= HeaderSize) {
        return ERROR_GEN_FAILURE;
    }
    void* address = mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_SHARED, file_.Get(), 0);
    if (address == MAP_FAILED) {
        return ErrorOf(errno);
    }
    address_ = address;
    return ERROR_SUCCESS;
}

}  // namespace posix
