#include "platform/win32.h"

// The record of line settings goes to the driver as it is, so its layout has to be the system's.
static_assert(sizeof(DCB) == 28);
static_assert(sizeof(WCHAR) == 2);
