#include <dlfcn.h>

#include <exception>

#include "platform/win32.h"

ProcessAttach::ProcessAttach(Entry entry) {
    Dl_info module{};
    dladdr(reinterpret_cast<void*>(entry), &module);
    const auto handle = reinterpret_cast<HINSTANCE>(module.dli_fbase);
    if (entry(handle, DLL_PROCESS_ATTACH, nullptr) == FALSE) {
        std::terminate();
    }
}
