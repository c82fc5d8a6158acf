#include "failing_calls/forward.h"

// The system's calls that can fail in the hands of a module that uses them rightly. Those on a
// valid handle that Windows always carries out are left out: CloseHandle, LocalFree, ReleaseMutex,
// UnmapViewOfFile, the critical sections, Sleep and the clocks.

using failing::Failure;
using failing::Forward;

namespace {

constexpr Failure<BOOL> DeviceFails{FALSE, ERROR_IO_DEVICE};
constexpr Failure<HANDLE> NoResources{nullptr, ERROR_NO_SYSTEM_RESOURCES};

}  // namespace

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                   DWORD creation, DWORD flags, HANDLE templateFile) {
    const Failure<HANDLE> failure{INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED};
    return Forward<&CreateFileA>(CALLER, failure, name, access, share, attributes, creation, flags,
                                 templateFile);
}

BOOL GetCommState(HANDLE file, LPDCB settings) {
    return Forward<&GetCommState>(CALLER, DeviceFails, file, settings);
}

BOOL SetCommState(HANDLE file, LPDCB settings) {
    return Forward<&SetCommState>(CALLER, Failure<BOOL>{FALSE, ERROR_INVALID_PARAMETER}, file,
                                  settings);
}

BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts) {
    return Forward<&SetCommTimeouts>(CALLER, DeviceFails, file, timeouts);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    return Forward<&ReadFile>(CALLER, DeviceFails, file, buffer, size, read, overlapped);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    return Forward<&WriteFile>(CALLER, DeviceFails, file, buffer, size, written, overlapped);
}

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                     DWORD size, va_list* arguments) {
    const Failure<DWORD> failure{0, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&FormatMessageW>(CALLER, failure, flags, source, code, language, buffer, size,
                                    arguments);
}

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT standard, LPCWSTR file) {
    const Failure<UINT> failure{static_cast<UINT>(standard), ERROR_ACCESS_DENIED};
    return Forward<&GetPrivateProfileIntW>(CALLER, failure, section, key, standard, file);
}

/// The module gives the empty text as default.
DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR standard, LPWSTR buffer,
                               DWORD size, LPCWSTR file) {
    buffer[0] = 0;
    const Failure<DWORD> failure{0, ERROR_ACCESS_DENIED};
    return Forward<&GetPrivateProfileStringW>(CALLER, failure, section, key, standard, buffer, size,
                                              file);
}

HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize,
                    LPTHREAD_START_ROUTINE function, LPVOID argument, DWORD flags, LPDWORD id) {
    const Failure<HANDLE> failure{nullptr, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&CreateThread>(CALLER, failure, attributes, stackSize, function, argument, flags,
                                  id);
}

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manualReset, BOOL initialState,
                    LPCWSTR name) {
    return Forward<&CreateEventW>(CALLER, NoResources, attributes, manualReset, initialState, name);
}

BOOL SetEvent(HANDLE event) {
    return Forward<&SetEvent>(CALLER, Failure<BOOL>{FALSE, ERROR_INVALID_HANDLE}, event);
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    const Failure<DWORD> failure{WAIT_FAILED, ERROR_INVALID_HANDLE};
    return Forward<&WaitForSingleObject>(CALLER, failure, handle, milliseconds);
}

HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCWSTR name) {
    return Forward<&CreateFileMappingW>(CALLER, NoResources, file, attributes, protection, sizeHigh,
                                        sizeLow, name);
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T bytes) {
    const Failure<LPVOID> failure{nullptr, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&MapViewOfFile>(CALLER, failure, mapping, access, offsetHigh, offsetLow, bytes);
}

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCWSTR name) {
    return Forward<&CreateMutexW>(CALLER, NoResources, attributes, initialOwner, name);
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module) {
    const Failure<BOOL> failure{FALSE, ERROR_MOD_NOT_FOUND};
    return Forward<&GetModuleHandleExW>(CALLER, failure, flags, address, module);
}
