#pragma once

#include "platform/win32.h"

/// A serial line's settings in the system's own terms.
namespace posix {

/// What a line has whose settings nobody has changed.
DCB PlainSettings();

/// Whether some serial line could have these settings.
bool AreAcceptable(const DCB& settings);

/// Makes a line raw and reads its settings; an error code if it is no serial line.
DWORD TakeOverLine(int file, DCB& settings);

/// Puts settings into force and holds the line to them. On an error code the line is as it was.
DWORD ApplySettings(int file, const DCB& settings);

}  // namespace posix
