#pragma once

/// The one door to Win32. On Windows it is <windows.h>; elsewhere it declares the closed list of
/// Win32 names that this project calls, with their real signatures and constants, and the layer in
/// platform/posix/ keeps their meaning. What that layer cannot do fully right is not declared.

#ifdef _WIN32

#include <windows.h>

#include <cstdlib>
#include <cwchar>

/// A literal of WCHARs.
#define WIDE(text) L##text

#else

#include "platform/posix/win32_functions.h"
#include "platform/posix/win32_types.h"

/// A literal of WCHARs.
#define WIDE(text) u##text

#endif

/// Makes DllMain hear of the module's loading on every platform. Define one at the end of the
/// translation unit that defines DllMain: `const ProcessAttach processAttach{DllMain};`
///
/// On Windows the loader calls DllMain and this does nothing. Elsewhere the constructor, run when
/// the module is loaded, calls it with DLL_PROCESS_ATTACH and a handle that is the module's base
/// address. A load cannot be refused there, so an entry that answers FALSE ends the process.
class [[maybe_unused]] ProcessAttach {
  public:
    using Entry = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

#ifdef _WIN32
    constexpr explicit ProcessAttach(Entry) {}
#else
    explicit ProcessAttach(Entry entry);
#endif
};
