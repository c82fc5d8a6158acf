#pragma once

#include "platform/win32.h"

/// Process attach: makes the shared record, the command queue and the locks, and reads the
/// settings. Can't fail. Runs on the loading thread, before any export can be called.
void AttachProcess(HINSTANCE module);

/// Closes the port, and releases ComLock, the queue, the shared record and the log's handles, in
/// this order. For the unloading of the library alone, on whichever thread that comes from: the
/// worker is over then. As the process ends everything stays, since other threads may be anywhere
/// in the module.
void DetachProcess();
