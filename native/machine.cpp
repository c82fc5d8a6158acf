#include "native/machine.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "native/wide_text.h"

namespace fs = std::filesystem;

namespace {

std::string FindRoot() {
    // NOLINTBEGIN(concurrency-mt-unsafe): read once; the module never changes its environment.
    const char* named = std::getenv("ZB_MACHINE_ROOT");
    const char* home = std::getenv("HOME");
    // NOLINTEND(concurrency-mt-unsafe)
    fs::path root;
    if (named != nullptr && *named != '\0') {
        root = named;
    } else if (home != nullptr && *home != '\0') {
        root = fs::path(home) / ".zb_machine";
    } else {
        throw std::runtime_error("neither ZB_MACHINE_ROOT nor HOME is set");
    }
    root = fs::absolute(root);
    for (const char* part : {"drive_c", "dosdevices", "objects"}) {
        fs::create_directories(root / part);
    }
    return root.string();
}

/// The entry of a folder that has this name but for its case; the name itself if there is none.
fs::path FindEntry(const fs::path& folder, const std::string& name) {
    std::error_code error;
    if (fs::exists(folder / name, error)) {
        return folder / name;
    }
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (posix::SameFolded(at->path().filename().string(), name)) {
            return at->path();
        }
    }
    return folder / name;
}

}  // namespace

const std::string& MachineRoot() {
    // Never ended, as all of the layer: threads may run on while the process ends.
    static const auto* const root = new std::string(FindRoot());
    return *root;
}

namespace posix {

std::string ObjectPath(std::string_view name) {
    return MachineRoot() + "/objects/" + std::string(name);
}

std::string NativePath(std::u16string_view path) {
    std::string rest = ToUtf8(path);
    if (rest.size() < 3 || Folded(rest[0]) != 'c' || rest[1] != ':' ||
        (rest[2] != '/' && rest[2] != '\\')) {
        return {};
    }
    const fs::path drive = fs::path(MachineRoot()) / "drive_c";
    fs::path native = drive;
    for (std::size_t start = 3; start < rest.size();) {
        const std::size_t end = std::min(rest.find_first_of("/\\", start), rest.size());
        const std::string name = rest.substr(start, end - start);
        if (name == "..") {
            native = native == drive ? drive : native.parent_path();
        } else if (!name.empty() && name != ".") {
            native = FindEntry(native, name);
        }
        start = end + 1;
    }
    return native.string();
}

File::~File() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

File& File::operator=(File&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

int File::Release() {
    return std::exchange(descriptor_, -1);
}

}  // namespace posix
