#pragma once

#include "platform/win32.h"

/// The module's own handle: the source of its dialogs and pictures. Written at load.
extern HINSTANCE ModuleInstance;
