#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "platform/thread_annotations.h"

// The Win32 types and constants of win32.h for systems other than Windows. Names and values are
// Windows' own.

#define WINAPI
#define CALLBACK

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONGLONG = std::uint64_t;
using SIZE_T = std::size_t;
using CHAR = char;
using WCHAR = char16_t;
using LPSTR = CHAR*;
using LPCSTR = const CHAR*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using errno_t = int;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

using HANDLE = void*;
using HLOCAL = void*;
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
struct HWND__;
using HWND = HWND__*;
struct HBITMAP__;
using HBITMAP = HBITMAP__*;
using HGDIOBJ = void*;

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;
using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr DWORD MAXDWORD = 0xFFFFFFFF;
constexpr int MAX_PATH = 260;
const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

constexpr DWORD DLL_PROCESS_DETACH = 0;
constexpr DWORD DLL_PROCESS_ATTACH = 1;
constexpr DWORD DLL_THREAD_ATTACH = 2;
constexpr DWORD DLL_THREAD_DETACH = 3;

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_ABANDONED = 0x80;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD PAGE_READWRITE = 0x04;
constexpr DWORD FILE_MAP_WRITE = 0x02;
constexpr DWORD FILE_MAP_READ = 0x04;
constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_INVALID_FUNCTION = 1;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_BAD_COMMAND = 22;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_NOT_SUPPORTED = 50;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
constexpr DWORD ERROR_NOT_OWNER = 288;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;
constexpr DWORD ERROR_INVALID_ADDRESS = 487;
constexpr DWORD ERROR_IO_DEVICE = 1117;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_CONTROL_ID_NOT_FOUND = 1421;
constexpr DWORD ERROR_NO_SYSTEM_RESOURCES = 1450;
constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

constexpr BYTE NOPARITY = 0;
constexpr BYTE ODDPARITY = 1;
constexpr BYTE EVENPARITY = 2;
constexpr BYTE MARKPARITY = 3;
constexpr BYTE SPACEPARITY = 4;
constexpr BYTE ONESTOPBIT = 0;
constexpr BYTE ONE5STOPBITS = 1;
constexpr BYTE TWOSTOPBITS = 2;
constexpr DWORD DTR_CONTROL_DISABLE = 0;
constexpr DWORD DTR_CONTROL_ENABLE = 1;
constexpr DWORD RTS_CONTROL_DISABLE = 0;
constexpr DWORD RTS_CONTROL_ENABLE = 1;
constexpr DWORD RTS_CONTROL_HANDSHAKE = 2;

struct DCB {
    DWORD DCBlength;
    DWORD BaudRate;
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};
using LPDCB = DCB*;
static_assert(sizeof(DCB) == 28);

/// All in milliseconds.
struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};
using LPCOMMTIMEOUTS = COMMTIMEOUTS*;

constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_NEXTDLGCTL = 0x28;  // Moves the keyboard's focus; here a dialog has none.
constexpr UINT WM_INITDIALOG = 0x0110;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_APP = 0x8000;
constexpr UINT STM_SETIMAGE = 0x0172;
constexpr UINT IMAGE_BITMAP = 0;
constexpr WORD EN_CHANGE = 0x0300;
constexpr WORD EN_UPDATE = 0x0400;

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 0x1;
constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 0x4;
constexpr UINT SWP_NOSIZE = 0x0001;
constexpr UINT SWP_NOMOVE = 0x0002;
constexpr UINT SWP_NOZORDER = 0x0004;
const HWND HWND_TOPMOST = reinterpret_cast<HWND>(~std::uintptr_t{0});

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using LPRECT = RECT*;

/// The low half of a message's parameter.
constexpr WORD LOWORD(std::uintptr_t value) {
    return static_cast<WORD>(value);
}

/// The number of a dialog or picture as the resource functions take it.
inline LPCWSTR MAKEINTRESOURCEW(int number) {
    return reinterpret_cast<LPCWSTR>(std::uintptr_t{static_cast<WORD>(number)});
}

/// Bytes only between InitializeCriticalSection and DeleteCriticalSection, and never copied.
struct ZB_CAPABILITY("mutex") CRITICAL_SECTION {
    pthread_mutex_t mutex;
    bool made;  ///< Written when no other thread can use it yet, or any more.
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;
