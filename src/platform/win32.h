#pragma once

/// The one door to Win32. On Windows it is <windows.h>; elsewhere it declares the closed list of
/// Win32 names that this project calls, with their real signatures and constants, and the layer in
/// native/ keeps their meaning. What that layer cannot do fully right is not declared.

#ifdef _WIN32

#include <windows.h>

#include <cstdlib>
#include <cwchar>

/// A literal of WCHARs.
#define WIDE(text) L##text

#else

#include "native/win32_functions.h"
#include "native/win32_types.h"

/// A literal of WCHARs.
#define WIDE(text) u##text

#endif

/// Makes DllMain hear of the module's loading and unloading on every platform. Define one at the
/// end of the translation unit that defines DllMain: `const ModuleLife moduleLife{DllMain};`
///
/// On Windows the loader calls DllMain and this does nothing. Elsewhere it calls it with
/// DLL_PROCESS_ATTACH and the module's base address when the module is loaded, and with
/// DLL_PROCESS_DETACH when it is unloaded. At the end of the process, when Windows says
/// DLL_PROCESS_DETACH with a reserved value that is not null, it is silent. A load cannot be
/// refused there, so an entry that answers FALSE ends the process.
class [[maybe_unused]] ModuleLife {
  public:
    using Entry = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

#ifdef _WIN32
    constexpr explicit ModuleLife(Entry) {}
#else
    explicit ModuleLife(Entry entry) {
        static const Attachment attachment(entry);
        // Behind it, since what is to be done at the end of the process is done the newest first.
        WatchForProcessEnd();
    }

  private:
    /// The library's own: ends with it.
    class Attachment {
      public:
        explicit Attachment(Entry entry);
        ~Attachment();
        Attachment(const Attachment&) = delete;
        Attachment& operator=(const Attachment&) = delete;

      private:
        const Entry entry_;
    };

    static void WatchForProcessEnd();
#endif
};
