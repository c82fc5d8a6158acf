#pragma once

#include <atomic>
#include <cstdint>

#include "platform/lock_hold.h"

/// The module's own handle: the source of its dialogs and pictures. Written at load.
extern HINSTANCE ModuleInstance;

/// 1 while the chatty serial log lines are wanted. Written at load and by the worker's reload.
extern std::atomic<std::uint8_t> SerialLogEnabled;

/// Divisor from controller counts to the host's position values; finite and never 0. Written at
/// load and by the worker's reload.
extern std::atomic<double> ScaleFactor;

/// The pause of an exchange in milliseconds, as the file has it; a negative value counts as 0.
/// Written at load, only read afterwards.
extern std::int32_t Delay;

/// Whether the worker mends a line that is lost. Written at load, only read afterwards.
extern bool ReopenWanted;

/// Whether only a reply that can't be another's is good. Written at load, only read afterwards.
extern bool StrictRepliesWanted;

/// What an opening of the port needs. The names are those of the settings file.
struct PortSettings {
    std::int32_t Port;       ///< number N of COM port N; negative makes every exchange fail
    std::uint32_t BaudRate;  ///< bits per second
    std::uint32_t ByteSize;  ///< data bits; the port takes the low byte
    std::uint32_t Parity;  ///< 0 none, 1 odd, 2 even, 3 mark, 4 space; the port takes the low byte
    std::uint32_t StopBits;  ///< 0 one, 1 one and a half, 2 two; the port takes the low byte
};

/// Guards the port settings; held for one copy.
extern CRITICAL_SECTION PortSettingsLock;

/// One consistent set of the port settings. Any thread.
PortSettings CurrentPortSettings();
/// Replaces the set as a whole; it takes effect at the next opening. Any thread.
void StorePortSettings(const PortSettings& settings);

/// Reads all that is read at load. Called once, on the loading thread.
void ReadSettingsAtLoad();
/// Reads `SerialLog` and `ScaleFactor` again. Called by the worker.
void ReloadSettings();

/// `CmdPoll`: milliseconds that the worker waits for a posted command before it polls.
std::uint32_t ReadCommandPoll();

/// `Dialog`: whether a start shows the diagnostic panel.
bool ReadPanelWanted();
