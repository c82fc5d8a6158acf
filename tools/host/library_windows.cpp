#include <stdexcept>
#include <string>

#include "host/library.h"
#include "platform/win32.h"

namespace host_tool {

void* LoadLibraryFile(const std::filesystem::path& path) {
    const HMODULE library = LoadLibraryW(path.wstring().c_str());
    if (library == nullptr) {
        throw std::runtime_error("cannot load " + path.string() + ", error " +
                                 std::to_string(GetLastError()));
    }
    return library;
}

void UnloadLibraryFile(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

void* FindExport(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace host_tool
