#pragma once

#include "platform/win32.h"

namespace posix {

/// Ends the calling thread, one of CreateThread's, and then its hold on the library. The thread's
/// own frames are unwound first, since they lie in that library.
[[noreturn]] void LeaveThread(HMODULE library);

}  // namespace posix
