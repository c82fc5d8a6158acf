#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <exception>

#include "native/handle.h"
#include "native/thread.h"
#include "platform/win32.h"

namespace posix {
namespace {

constinit std::atomic<bool> processEnds{false};

/// As the loader's own, which nobody else can see: whoever unloads a library last has everything
/// behind him that was done in it.
pthread_mutex_t loaderLock = PTHREAD_MUTEX_INITIALIZER;

HINSTANCE BaseOf(const void* address) {
    Dl_info info{};
    dladdr(address, &info);
    return static_cast<HINSTANCE>(info.dli_fbase);
}

HINSTANCE ModuleOf(ModuleLife::Entry entry) {
    return BaseOf(reinterpret_cast<void*>(entry));
}

/// One more hold on the library or program that an address lies in; null if there is none.
void* Hold(const void* address, int flags) {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) {
        return nullptr;
    }
    const bool isProgram = map->l_name[0] == 0;
    return dlopen(isProgram ? nullptr : map->l_name, RTLD_NOW | RTLD_NOLOAD | flags);
}

}  // namespace
}  // namespace posix

ModuleLife::Attachment::Attachment(Entry entry) : entry_(entry) {
    if (entry_(posix::ModuleOf(entry_), DLL_PROCESS_ATTACH, nullptr) == FALSE) {
        std::terminate();
    }
}

ModuleLife::Attachment::~Attachment() {
    if (!posix::processEnds.load()) {
        entry_(posix::ModuleOf(entry_), DLL_PROCESS_DETACH, nullptr);
    }
}

void ModuleLife::WatchForProcessEnd() {
    // The layer's own: not called when the module is unloaded.
    if (std::atexit([] { posix::processEnds.store(true); }) != 0) {
        std::terminate();
    }
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module) {
    constexpr DWORD Counted = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    constexpr DWORD Pinned = GET_MODULE_HANDLE_EX_FLAG_PIN | Counted;
    if (flags != Counted && flags != Pinned) {
        return posix::Fail(ERROR_NOT_SUPPORTED);
    }
    if (posix::Hold(address, flags == Pinned ? RTLD_NODELETE : 0) == nullptr) {
        return posix::Fail(ERROR_MOD_NOT_FOUND);
    }
    *module = posix::BaseOf(address);
    return TRUE;
}

BOOL FreeLibrary(HMODULE module) {
    void* const library = posix::Hold(module, 0);
    if (library == nullptr) {
        return posix::Fail(ERROR_MOD_NOT_FOUND);
    }
    posix::Lock(posix::loaderLock);
    dlclose(library);
    dlclose(library);
    posix::Unlock(posix::loaderLock);
    return TRUE;
}

void FreeLibraryAndExitThread(HMODULE module, DWORD /*code*/) {
    posix::LeaveThread(module);
}
