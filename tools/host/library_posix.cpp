#include <dlfcn.h>
#include <link.h>

#include <stdexcept>

#include "host/library.h"
#include "platform/win32.h"

namespace host_tool {

void* LoadLibraryFile(const std::filesystem::path& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): its text is the thread's own.
        throw std::runtime_error(dlerror());
    }
    return library;
}

void UnloadLibraryFile(void* library) {
    link_map* map = nullptr;
    dlinfo(library, RTLD_DI_LINKMAP, &map);
    FreeLibrary(reinterpret_cast<HMODULE>(map->l_addr));
}

void* FindExport(void* library, const char* name) {
    return dlsym(library, name);
}

}  // namespace host_tool
