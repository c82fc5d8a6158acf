#pragma once

#include <atomic>

#include "platform/win32.h"

// What both homing dialogs do alike. All of it on the dialog's own thread.

/// Places the dialog at half its parent's size less half its own, in screen coordinates: centred on
/// a parent at the screen's origin. Without a parent it is centred on the screen.
void PlaceHomingDialog(HWND dialog);

/// The picture of this resource number, the caller's to delete.
HBITMAP LoadPicture(int resource);
/// Shows it in the dialog's picture control.
void ShowPicture(HWND dialog, HBITMAP picture);

/// Runs the modal dialog of this resource number and returns when it has ended. `open` says whether
/// that dialog is open already: there is only one at a time, and a second call then does nothing.
void RunHomingDialog(int resource, HWND parent, DLGPROC procedure, std::atomic<bool>& open);
