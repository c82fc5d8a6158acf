#pragma once

#include "platform/win32.h"

// The boxes "Sent Buffer:" and "Received Buffer:" of the panel show every exchange of any thread.
// The exchange only leaves its text behind; the panel's thread writes the boxes when it comes to
// it. Between two such writes only the newest text of a box counts, and one message waits in the
// panel's queue at most, however many exchanges there are.

/// Asks the panel to call WriteBufferBoxes.
inline constexpr UINT BufferBoxesMessage = WM_APP + 1;

/// Makes the lock of the boxes ready. Part of process attach.
void MakePanelLock();

/// From now on the texts of the line go to this panel. On the panel's thread.
void FillBufferBoxes(HWND panel);

/// Shows the newest texts. The panel's thread.
void WriteBufferBoxes(HWND panel);
