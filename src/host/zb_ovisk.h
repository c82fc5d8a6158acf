#pragma once

#include <cstdint>

#include "host/zb_ovisk_plain.h"
#include "stage/cnc_notify.h"
#include "stage/ovisk_data.h"

// A module that was built with another standard library says so: ZBOVISK_OTHER_STRING.
#if !defined(ZBOVISK_OTHER_STRING) && !(defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI)
#error "The record holds the std::string of libstdc++'s new ABI: include zb_ovisk_plain.h instead."
#endif

/// @file
/// The module's exports: all that a host needs.
///
/// Order of calls. The module is loaded once. `OviskCmd_Startup` opens the port, puts the
/// controller into remote mode and starts the worker, which from then on keeps the record current.
/// The other exports may be called at any time, from any thread; none of them waits for the serial
/// line but where it says so. `OviskCmd_Shutdown` stops the worker and closes the port: from then
/// on nothing is sent but what the host itself asks for. A module that was stopped is not started
/// again before it has been unloaded.
///
/// A host may unload the library, or end its process, at any time. A worker that still runs holds
/// the library until it is over, which without a shutdown is never.
///
///     OVISK_ZbrCmd(OviskCmd_Startup, 0);
///     OviskData data;                          // constructed, owned by the host
///     while (measuring) {
///         ZbOvisk_GetOviskData(data);
///         if (!data.cposmr.xError) Show(data.cposmr.x);
///         bool anySwitch, emergency, lamps;
///         if (ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lamps)) React(anySwitch, lamps);
///     }
///     OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
///
/// Host and module have to be built with one string type and share one heap: the module assigns the
/// texts of the host's record. Everybody else uses zb_ovisk_plain.h, which this header includes.

/// Commands of OVISK_ZbrCmd.
enum OviskCommand : std::uint32_t {
    /// data: 1 selects automatic homing, any other value manual homing. Takes one exchange on the
    /// caller's thread. When the settings ask for the diagnostic panel, that thread has to run a
    /// message loop from then on, with IsDialogMessage if the panel is to have its keyboard; and
    /// the library stays loaded until the process ends, since the panel does.
    OviskCmd_Startup = 1,
    /// data: only logged. Waits for the worker for about two seconds at most, then closes the port.
    /// What was posted before goes out if that takes no longer; after it the worker sends nothing,
    /// also when a dead line comes back.
    OviskCmd_Shutdown = 2,
    /// data: the window handle of the dialog's parent. Runs a homing dialog on the caller's thread,
    /// which has to be a window thread, and returns when it has closed: after manual homing, or as
    /// soon as automatic homing has been started. Does nothing while that dialog is open already.
    OviskCmd_Home = 3,
};

extern "C" {
/// Copies the stage data into the host's record, with the positions divided by `ScaleFactor`.
/// Never waits for the line. True; false only when there was no memory for a text.
ZBOVISK_API bool ZbOvisk_GetOviskData(OviskData& data);
}
