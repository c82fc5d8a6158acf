#pragma once

#include "platform/win32.h"

/// What stands before the module is attached, and ends after everything else: the shared record,
/// the command queue and ComLock are made in this order and go in the reverse one, the log channel
/// last. The module has one object of this kind.
class StaticStage {
  public:
    StaticStage();
    ~StaticStage();
    StaticStage(const StaticStage&) = delete;
    StaticStage& operator=(const StaticStage&) = delete;
};

/// Process attach: makes the locks ready and reads the settings. Can't fail. Runs on the loading
/// thread, before any export can be called.
void AttachProcess(HINSTANCE module);
