#pragma once

#include <cstdint>
#include <string>

#include "platform/lock_hold.h"

/// The one lock of the serial link: guards the port and is held for one whole exchange, up to
/// about 3.7 s at worst. Take it through ComLockHold. Inside it only the port settings' lock, that
/// of the panel's boxes and the log channel's mutex are taken.
extern CRITICAL_SECTION ComLock;

/// The open port, null when it is closed.
extern HANDLE ComHandle ZB_GUARDED_BY(ComLock);
/// The `Port` value that ComHandle was opened for, -1 when none is.
extern std::int32_t OpenPortNumber ZB_GUARDED_BY(ComLock);

/// Whether the last read was ended by the system, and not by silence.
extern bool ReadBroke ZB_GUARDED_BY(ComLock);

/// Which way a text went over the line.
enum class LineText { Sent, Received };

/// Hears the texts of every exchange, with ComLock held, on the thread of the exchange: it has to
/// keep what it wants and return at once. It must wait for no window and take no lock that is held
/// for longer than a copy.
using LineListener = void (*)(LineText way, const std::string& text) noexcept;

/// Sets the one listener. Any thread; for the life of the module.
void ListenToLine(LineListener listener);

/// Opens and configures the port of the settings unless it is open already; a port that is open on
/// another number is closed first. Returns 1 when the port is usable, 0 with a log line when not.
int ZbComOpen() ZB_REQUIRES(ComLock);

/// Closes the port, if it is open.
void ZbComClose() ZB_REQUIRES(ComLock);

/// Writes the text as it stands, with the line end that it carries. False when the port is closed,
/// or the line's gate to this thread, or with a log line when the write failed, or when the port
/// still has no time-outs: nothing is then written. `logEnabled` turns the line with the text on.
/// The line's listener hears the text first, even if the write then fails, and a reply once it is
/// whole.
bool ZbComWrite(const std::string& command, bool logEnabled) ZB_REQUIRES(ComLock);

/// Reads away what waits on the open port, with a log line that tells its text. False when nothing
/// did. The port has no time-outs afterwards; the next write sets them.
bool ZbComDropLateReply() ZB_REQUIRES(ComLock);

/// Reads until a line-feed has come. `reply` is emptied first and takes every byte up to the end of
/// the read that brought the line-feed; at most 64 KiB are collected. False, with a log line, when
/// a read failed or the time limit of about 1000 ms passed (2650 ms on a silent line); `reply`
/// then keeps what came.
bool ZbComRead(std::string& reply, bool logEnabled) ZB_REQUIRES(ComLock);

/// Logs the prefix, the system's text for the error code, and a line-feed.
void LogSystemError(const char* prefix, std::uint32_t code);
