#pragma once

#include "link/protocol.h"
#include "platform/win32.h"

// What the panel's buttons do, on the panel's thread. An exchange that fails shows only in the log,
// and the box for its reply keeps its text.

/// "Open Comm": opens the port of the settings; the boxes of the port are not looked at.
void MyPanelOpenComm();

/// "Send": sends the text of its box, at most 253 characters, with CR LF, and shows the whole reply
/// in "Received Buffer:". The text is not looked at.
void MyPanelSend(HWND panel);

/// "Set Light": sets a lamp to the percentage in `valueControl`, held to 0 to 100, and shows the
/// controller's answer to the query in `resultControl`. A text without a number is logged and
/// nothing is sent.
void MyPanelSetLight(HWND panel, int valueControl, int resultControl, const char* setPrefix,
                     const char* query);

/// "Set Position": moves to the two or three numbers in its box, Z to 0.0 if there are two. With
/// fewer it does nothing. The log tells the end of the move.
void MyPanelSetPosition(HWND panel);
