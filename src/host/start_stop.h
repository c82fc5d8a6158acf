#pragma once

#include <atomic>
#include <cstdint>

/// 1 when the last start asked for automatic homing.
extern std::atomic<std::uint8_t> AutoHomingMode;

/// `OviskCmd_Startup`: remote mode, then the worker, if none was ever started, then the panel, if
/// the settings ask for it; it belongs to the caller's thread. Takes one exchange on that thread.
void StartModule(std::uintptr_t data);

/// `OviskCmd_Shutdown`: asks the worker to end, waits for it for at most 200 sleeps of 10 ms, and
/// closes the port; an exchange that still runs closes it as it ends. A worker that is not over by
/// then sends nothing more.
void StopModule(std::uintptr_t data);

/// `OviskCmd_Home`: runs the homing dialog that `AutoHomingMode` selects, on the caller's thread,
/// with the window handle in `data` as its parent.
void HomeStage(std::uintptr_t data);
