#pragma once

#include <atomic>

#include "platform/win32.h"

/// The diagnostic panel: a test bench for the line, beside the worker. Everything in it runs on the
/// thread that made it, which an action holds for as long as its exchange takes, behind the
/// exchange under way; with a silent controller that is seconds.

/// The panel's window; null until the first start that wants it. A panel goes with its thread; the
/// next start then makes a new one.
extern std::atomic<HWND> PanelWindow;

/// Shows the panel if the settings file asks for it: makes it at the first call, on the caller's
/// thread, which then has to run a message loop, and brings a hidden one back at a later call. Any
/// thread; waits for nothing.
void ShowPanelIfWanted();

/// The panel's dialog procedure: 1 for what it handles, 0 for the rest.
INT_PTR CALLBACK MyPanelDialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
