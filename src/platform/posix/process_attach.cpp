#include <dlfcn.h>

#include <exception>

#include "platform/posix/handle.h"
#include "platform/win32.h"

ProcessAttach::ProcessAttach(Entry entry) {
    Dl_info module{};
    dladdr(reinterpret_cast<void*>(entry), &module);
    const auto handle = reinterpret_cast<HINSTANCE>(module.dli_fbase);
    if (entry(handle, DLL_PROCESS_ATTACH, nullptr) == FALSE) {
        std::terminate();
    }
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module) {
    if (flags != (GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS)) {
        return posix::Fail(ERROR_NOT_SUPPORTED);
    }
    Dl_info info{};
    if (dladdr(address, &info) == 0 ||
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE) == nullptr) {
        return posix::Fail(ERROR_MOD_NOT_FOUND);
    }
    *module = reinterpret_cast<HMODULE>(info.dli_fbase);
    return TRUE;
}
