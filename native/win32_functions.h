#pragma once

#include <cstdarg>

#include "native/win32_types.h"

// The Win32 functions of win32.h for systems other than Windows: what each one keeps of its
// meaning there. For all of them: nothing is thrown; a failure leaves its code for GetLastError of
// the same thread; every function may be called by any thread at any time; arguments that the
// layer does not know (security attributes, overlapped calls, other flags) are refused with
// ERROR_NOT_SUPPORTED.

// ---- Handles -------------------------------------------------------------------------------

/// Ends a handle. A call of another thread that is under way on the handle goes on to its end, and
/// the thing behind the handle lives until then. FALSE and ERROR_INVALID_HANDLE for a handle that
/// is closed already or was never given out.
BOOL CloseHandle(HANDLE handle);

/// The calling thread's newest error code. A success leaves it alone, but for the Create functions
/// of mappings, mutexes and events, which leave 0 or ERROR_ALREADY_EXISTS.
DWORD GetLastError();

// ---- Serial port ---------------------------------------------------------------------------

/// Opens the serial port `\\.\COM<n>`: the machine's dosdevices/com<n>, or /dev/ttyS<n-1> without
/// such a link. Access must be GENERIC_READ | GENERIC_WRITE, share 0, creation OPEN_EXISTING. The
/// line becomes raw; speed and framing stay as they were. The caller closes the handle.
/// INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND: no such port; ERROR_ACCESS_DENIED: somebody has
/// it open; ERROR_INVALID_FUNCTION: not a serial line.
HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                   DWORD creation, DWORD flags, HANDLE templateFile);

/// The port's settings as they were last accepted.
BOOL GetCommState(HANDLE file, LPDCB settings);

/// Sets any speed, 5 to 8 data bits, parity 0 to 4, stop bits 0 to 2 (1.5 with 5 data bits only,
/// 2 with 6 to 8), XON/XOFF and CTS/RTS flow control, DTR and RTS. Everything else, and two equal
/// flow control characters, is refused with ERROR_INVALID_PARAMETER and leaves the line as it was.
BOOL SetCommState(HANDLE file, LPDCB settings);

/// Sets the time-outs of the calls that start from now on; all 0 (never) in a newly opened port.
BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts);

/// Reads until `size` bytes have come or a time-out has passed, which is a success with what came.
/// Total: constant + multiplier * size, from the call on, none if both are 0. Interval: from each
/// byte to the next, none if 0. Interval MAXDWORD with both others 0 takes what is there; with
/// multiplier MAXDWORD it waits at most the constant for a first byte, then takes what is there.
/// Once the other end has hung up: what came first, then ERROR_BAD_COMMAND at once.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped);

/// Hands `size` bytes to the line, with the total time-out constant + multiplier * size (none if
/// both are 0); a time-out is a success with fewer bytes. Success means that the system has the
/// bytes, not that they have left the machine. ERROR_BAD_COMMAND once the other end has hung up.
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped);

// ---- Error text ----------------------------------------------------------------------------

/// The system's English text for an error code, ending in CR LF, for the codes of this layer only.
/// Flags must be ALLOCATE_BUFFER | FROM_SYSTEM | IGNORE_INSERTS and source null; `buffer` is really
/// the address of the LPWSTR that gets the text, which the caller ends with LocalFree. Returns its
/// length, or 0 with ERROR_MR_MID_NOT_FOUND for other codes.
DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                     DWORD size, va_list* arguments);

/// Frees a text of FormatMessageW; null does nothing. Returns null.
HLOCAL LocalFree(HLOCAL memory);

// ---- Settings file -------------------------------------------------------------------------

/// Reads a number from a settings file on drive C:, afresh with each call. Decimal with an optional
/// sign, up to the first other character; no digits give 0; modulo 2^32. The default for a missing
/// file, section, key or an empty value.
UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT standard, LPCWSTR file);

/// Reads a text in the same way, without the blanks and one pair of quotes around it, cut off at
/// `size` - 1 characters, always ended with a zero. Returns the count copied without the zero. The
/// default (without trailing blanks) for what is missing. Section and key must not be null.
/// File: bytes of code page 1252, or UTF-8 or UTF-16LE behind their byte order mark; at most 1 MiB.
DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR standard, LPWSTR buffer,
                               DWORD size, LPCWSTR file);

// ---- Threads, events, waits ----------------------------------------------------------------

/// Starts a thread. Flags must be 0; a stack size below the system's own counts as that. Closing
/// the handle does not end the thread. DllMain does not hear of it.
HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize,
                    LPTHREAD_START_ROUTINE function, LPVOID argument, DWORD flags, LPDWORD id);

/// Makes or opens an auto-reset event, across processes if it has a name. A manual-reset event is
/// refused with ERROR_NOT_SUPPORTED. Null on failure; a name that belongs to another kind of object
/// fails with ERROR_INVALID_HANDLE, one with a backslash other than in Local\ or Global\ with
/// ERROR_PATH_NOT_FOUND. An existing event keeps its state and leaves ERROR_ALREADY_EXISTS.
HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manualReset, BOOL initialState,
                    LPCWSTR name);

/// Sets an event: it stays set until one wait has consumed it.
BOOL SetEvent(HANDLE event);

/// Waits at most `milliseconds` (INFINITE: for ever) for an event, a mutex or the end of a thread,
/// on one absolute deadline. WAIT_OBJECT_0, WAIT_TIMEOUT, WAIT_ABANDONED (the mutex is the
/// caller's, its last owner ended without a release), or WAIT_FAILED with ERROR_INVALID_HANDLE.
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

/// Waits, on one absolute deadline; 0 gives the processor to another thread.
void Sleep(DWORD milliseconds);

/// Milliseconds of a clock that never goes back; the short one wraps after 49.7 days.
DWORD GetTickCount();
ULONGLONG GetTickCount64();

// ---- Critical sections ---------------------------------------------------------------------

/// A lock between the threads of one process that its owner may take again; it takes as many
/// leaves. Deleting one that is held is an error of the caller; using one that has not been made,
/// or has been deleted, ends the process.
void InitializeCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section) ZB_ACQUIRE(*section);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) ZB_TRY_ACQUIRE(true, *section);
void LeaveCriticalSection(LPCRITICAL_SECTION section) ZB_RELEASE(*section);

// ---- Shared between processes --------------------------------------------------------------

/// Makes or opens memory that is shared by name, filled with zeros when made. `file` must be
/// INVALID_HANDLE_VALUE and `protection` PAGE_READWRITE. An existing one keeps its size and leaves
/// ERROR_ALREADY_EXISTS. The name goes with the last handle in any process, killed ones included;
/// views that are left keep their memory, which later openers do not see. Names as for
/// CreateEventW.
HANDLE CreateFileMappingW(HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protection,
                          DWORD sizeHigh, DWORD sizeLow, LPCWSTR name);

/// Makes the memory visible from its start on: `bytes` of it, 0 for all. Access FILE_MAP_READ,
/// FILE_MAP_WRITE or FILE_MAP_ALL_ACCESS. The view stays when the mapping's handle is closed.
/// More bytes than there are fail with ERROR_ACCESS_DENIED.
LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T bytes);

/// Ends a view; ERROR_INVALID_ADDRESS if there is none at that address.
BOOL UnmapViewOfFile(LPCVOID view);

/// Makes or opens a mutex, across processes if it has a name; the owning thread may take it again
/// and releases it as often. The initial owner counts only when this call made the mutex. A thread
/// that ends while it owns the mutex gives it up: the next owner's wait says WAIT_ABANDONED.
HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCWSTR name);

/// Gives one ownership of the calling thread back; ERROR_NOT_OWNER if it has none.
BOOL ReleaseMutex(HANDLE mutex);

/// Finds a top-level window by its title, without regard to the case of A to Z, in any process of
/// this machine. The class must be null and the title must not. Null if there is none.
HWND FindWindowW(LPCWSTR className, LPCWSTR title);

// ---- The module itself ---------------------------------------------------------------------

/// One more hold on the library that `address` lies in, until FreeLibrary gives it back; with
/// GET_MODULE_HANDLE_EX_FLAG_PIN one that lasts until the process ends. The other flag must be
/// GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS. FALSE with ERROR_MOD_NOT_FOUND if the address is in no
/// library, as the program's own are.
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);

/// Gives one hold back; the last one unloads the library.
BOOL FreeLibrary(HMODULE module);

/// Ends the calling thread and gives one hold back, after the thread's last step within the
/// library. For threads of CreateThread; the code is dropped.
[[noreturn]] void FreeLibraryAndExitThread(HMODULE module, DWORD code);

/// A number of the calling thread that no other thread of the machine has.
DWORD GetCurrentThreadId();

// ---- Dialogs -------------------------------------------------------------------------------

// Dialogs without a screen. Each belongs to the thread that made it, and all of them stand in one
// table of the process. A function that reads or changes a dialog or its controls works on the
// owner's thread: called by another thread it waits until the owner's message loop has served it,
// and serves calls to its own windows meanwhile. FALSE or 0 and ERROR_INVALID_WINDOW_HANDLE for a
// window that has gone, also while waiting; window handles are never given out twice.
// ERROR_CONTROL_ID_NOT_FOUND for a control that the dialog does not have.
// Dialogs get WM_INITDIALOG, WM_COMMAND, WM_TIMER, WM_DESTROY and what is sent or posted to them;
// a WM_CLOSE that the procedure does not handle becomes a posted WM_COMMAND of IDCANCEL.

/// Runs the dialog of the template until EndDialog, and returns its result. The template is a
/// number of MAKEINTRESOURCEW, of the module `instance`; a null instance finds the only module that
/// has templates. The owner is disabled meanwhile; it may be null. WM_INITDIALOG comes first,
/// WM_DESTROY last; the dialog is shown between them. All windows of the thread are served.
/// 0 with ERROR_INVALID_WINDOW_HANDLE for a wrong owner, -1 for any other failure, such as
/// ERROR_RESOURCE_NAME_NOT_FOUND.
INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter);

/// Makes a dialog that its thread's message loop serves; it is visible if its template says so.
/// Null on failure. A thread takes its dialogs along when it ends, without a message.
HWND CreateDialogParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter);

/// Hides a modal dialog, enables its owner and ends its loop after the message under way. The
/// newest result counts.
BOOL EndDialog(HWND dialog, INT_PTR result);

/// Puts a message at the end of the queue of the window's thread; waits for nothing.
/// ERROR_NOT_ENOUGH_QUOTA if 10,000 messages wait there already.
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Calls the dialog's procedure on its own thread. Of the controls' messages there is only
/// STM_SETIMAGE with IMAGE_BITMAP to a static control that shows bitmaps: it takes the picture's
/// size, and the answer is the picture before. The picture stays its maker's.
LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// Moves and sizes a dialog, and makes it topmost with `after` HWND_TOPMOST. Flags SWP_NOSIZE,
/// SWP_NOMOVE and SWP_NOZORDER; without the last `after` must be HWND_TOPMOST.
BOOL SetWindowPos(HWND dialog, HWND after, int x, int y, int width, int height, UINT flags);

/// A dialog's caption, which FindWindowW finds at once, of at most 124 characters; or the text of a
/// control, as with SetDlgItemTextW.
BOOL SetWindowTextW(HWND window, LPCWSTR text);

/// Hides a dialog (SW_HIDE) or shows it (SW_SHOWNORMAL). Whether it was visible before.
BOOL ShowWindow(HWND dialog, int command);

/// Whether there is such a window, and whether it is a dialog that is shown.
BOOL IsWindow(HWND window);
BOOL IsWindowVisible(HWND window);

/// Nothing needs drawing: whether there is such a window.
BOOL UpdateWindow(HWND window);

/// A dialog's owner, or a control's dialog. Null without an error if there is none.
HWND GetParent(HWND window);

/// A window's place on the screen, in pixels.
BOOL GetWindowRect(HWND window, LPRECT place);

/// The window that is the screen, 1280 x 1024 pixels; for GetWindowRect only.
HWND GetDesktopWindow();

/// The first control of that id.
HWND GetDlgItem(HWND dialog, int id);

/// Lets a dialog or control take the user's input, or not. Whether it was disabled before.
BOOL EnableWindow(HWND window, BOOL enable);

/// Replaces a control's text; the one with an A takes text of the ANSI code page. A single-line
/// edit control tells its dialog with EN_UPDATE and EN_CHANGE.
BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text);
BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text);

/// A control's text in the ANSI code page ("?" for what that does not have), cut off at `size` - 1
/// characters and ended with a zero. Returns the count copied without the zero.
UINT GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size);

/// Writes a number in decimal, with a minus sign only if it counts as signed.
BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned);

/// Reads the decimal number at the start of a control's text, after blanks and, if signed, a sign.
/// `translated`, which may be null, tells whether there was one in range; if not, it is 0.
UINT GetDlgItemInt(HWND dialog, int id, LPBOOL translated, BOOL isSigned);

/// Sends a WM_TIMER each `milliseconds` (at least 10) while the loop runs and has nothing else to
/// do; a late one is not made up for. The same id starts anew. Only for the owner's thread, and
/// without a procedure. The id, or 1 for id 0; 0 on failure.
UINT_PTR SetTimer(HWND dialog, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);

/// Loads a picture of the module, found like a dialog's template. The caller deletes it. Null with
/// ERROR_RESOURCE_NAME_NOT_FOUND if there is none.
HBITMAP LoadBitmapW(HINSTANCE instance, LPCWSTR number);

/// Deletes a picture of LoadBitmapW; FALSE if it is none, or has been deleted.
BOOL DeleteObject(HGDIOBJ picture);

// ---- Numbers in wide text (C run-time) -----------------------------------------------------

/// Writes a number in decimal; the radix must be 10. 0, or EINVAL for a null or empty buffer or
/// another radix, or ERANGE for a short buffer, which becomes an empty text.
errno_t _ltow_s(LONG value, WCHAR* buffer, std::size_t size, int radix);
errno_t _itow_s(int value, WCHAR* buffer, std::size_t size, int radix);

/// The decimal number at the start of a text, after blanks; 0.0 if there is none.
double _wtof(const WCHAR* text);
