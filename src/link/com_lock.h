#pragma once

#include "link/serial_port.h"

/// Holds ComLock, taken in turn: a thread waits for the exchange under way and those of the threads
/// that came before it, however fast others come back. On leaving it closes the port if that was
/// asked for meanwhile.
class ZB_SCOPED_CAPABILITY ComLockHold {
  public:
    ComLockHold() ZB_ACQUIRE(ComLock);
    ~ComLockHold() ZB_RELEASE();
    ComLockHold(const ComLockHold&) = delete;
    ComLockHold& operator=(const ComLockHold&) = delete;
};

/// Closes the port now if no exchange runs; otherwise the exchange that runs closes it as it ends.
/// Never waits, and never pulls the port from under an exchange. Any thread that does not hold
/// ComLock.
void ClosePortWhenFree() ZB_EXCLUDES(ComLock);

/// Life of ComLock: made before anything else runs, freed as one of the module's last acts.
void MakeComLock();
void FreeComLock();
