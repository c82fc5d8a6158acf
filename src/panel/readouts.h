#pragma once

#include <cstdint>

#include "platform/win32.h"
#include "replies/reply_records.h"

// The panel's readouts put their own query to the controller, on the panel's thread, which they
// hold for one exchange and the exchange before it at most; the one of the recovery asks nobody. A
// failed query leaves the box as it was; its cause is in the log.

/// Copies the five boxes of the port into the port settings. A box without an unsigned number gives
/// 0. A new number of the port takes effect with the next exchange of any thread, the rest with the
/// next opening.
void MyPanelReadPortFields(HWND panel);

/// Both: copy the port fields, ask, count and show.
void MyPanelGetPosition(HWND panel);
void MyPanelGetStatus(HWND panel);

/// Shows whether the module mends the line and takes strict replies only, whether the line is lost
/// and how often it was. Waits for nothing.
void MyPanelShowRecovery(HWND panel);

/// What "Set Position" registers for the end of its move: logs it. Runs on the worker.
void MyOvsCncCallbackFunc(bool finished, bool error, const McndReply* reply, std::intptr_t data);
