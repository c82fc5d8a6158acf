#include "failing_calls/forward.h"

// The calls on windows that can fail. EnableWindow and ShowWindow tell the state before and no
// failure; GetDesktopWindow and DeleteObject of a loaded picture always do their work.

using failing::Failure;
using failing::Forward;

namespace {

constexpr Failure<BOOL> NoMemory{FALSE, ERROR_NOT_ENOUGH_MEMORY};
constexpr Failure<BOOL> NoWindow{FALSE, ERROR_INVALID_WINDOW_HANDLE};
constexpr Failure<HWND> NoSuchWindow{nullptr, ERROR_INVALID_WINDOW_HANDLE};
constexpr Failure<UINT> NoText{0, ERROR_CONTROL_ID_NOT_FOUND};

}  // namespace

HWND FindWindowW(LPCWSTR className, LPCWSTR title) {
    return Forward<&FindWindowW>(CALLER, Failure<HWND>{nullptr, ERROR_ACCESS_DENIED}, className,
                                 title);
}

INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter) {
    const Failure<INT_PTR> failure{-1, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&DialogBoxParamW>(CALLER, failure, instance, number, owner, procedure,
                                     parameter);
}

HWND CreateDialogParamW(HINSTANCE instance, LPCWSTR number, HWND owner, DLGPROC procedure,
                        LPARAM parameter) {
    const Failure<HWND> failure{nullptr, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&CreateDialogParamW>(CALLER, failure, instance, number, owner, procedure,
                                        parameter);
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
    return Forward<&EndDialog>(CALLER, NoWindow, dialog, result);
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const Failure<BOOL> failure{FALSE, ERROR_NOT_ENOUGH_QUOTA};
    return Forward<&PostMessageW>(CALLER, failure, window, message, wParam, lParam);
}

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const Failure<LRESULT> failure{0, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&SendMessageW>(CALLER, failure, window, message, wParam, lParam);
}

BOOL SetWindowPos(HWND dialog, HWND after, int x, int y, int width, int height, UINT flags) {
    return Forward<&SetWindowPos>(CALLER, NoMemory, dialog, after, x, y, width, height, flags);
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
    return Forward<&SetWindowTextW>(CALLER, NoMemory, window, text);
}

BOOL UpdateWindow(HWND window) {
    return Forward<&UpdateWindow>(CALLER, NoMemory, window);
}

HWND GetParent(HWND window) {
    return Forward<&GetParent>(CALLER, NoSuchWindow, window);
}

BOOL GetWindowRect(HWND window, LPRECT place) {
    return Forward<&GetWindowRect>(CALLER, NoWindow, window, place);
}

HWND GetDlgItem(HWND dialog, int id) {
    return Forward<&GetDlgItem>(CALLER, Failure<HWND>{nullptr, ERROR_CONTROL_ID_NOT_FOUND}, dialog,
                                id);
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    return Forward<&SetDlgItemTextW>(CALLER, NoMemory, dialog, id, text);
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    return Forward<&SetDlgItemTextA>(CALLER, NoMemory, dialog, id, text);
}

UINT GetDlgItemTextA(HWND dialog, int id, LPSTR buffer, int size) {
    buffer[0] = 0;
    return Forward<&GetDlgItemTextA>(CALLER, NoText, dialog, id, buffer, size);
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) {
    return Forward<&SetDlgItemInt>(CALLER, NoMemory, dialog, id, value, isSigned);
}

/// The module does not ask whether there was a number.
UINT GetDlgItemInt(HWND dialog, int id, LPBOOL translated, BOOL isSigned) {
    return Forward<&GetDlgItemInt>(CALLER, NoText, dialog, id, translated, isSigned);
}

UINT_PTR SetTimer(HWND dialog, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    const Failure<UINT_PTR> failure{0, ERROR_NO_SYSTEM_RESOURCES};
    return Forward<&SetTimer>(CALLER, failure, dialog, id, milliseconds, procedure);
}

HBITMAP LoadBitmapW(HINSTANCE instance, LPCWSTR number) {
    const Failure<HBITMAP> failure{nullptr, ERROR_NOT_ENOUGH_MEMORY};
    return Forward<&LoadBitmapW>(CALLER, failure, instance, number);
}
