#include "link/serial_port.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "link/line_gate.h"
#include "link/link_health.h"
#include "log/zbr_log.h"
#include "settings/settings.h"

CRITICAL_SECTION ComLock;
HANDLE ComHandle = nullptr;
std::int32_t OpenPortNumber = -1;
bool ReadBroke = false;

namespace {

constexpr COMMTIMEOUTS TimeOuts = {
    .ReadIntervalTimeout = 20,
    .ReadTotalTimeoutMultiplier = 10,
    .ReadTotalTimeoutConstant = 100,
    .WriteTotalTimeoutMultiplier = 10,
    .WriteTotalTimeoutConstant = 100,
};
constexpr DWORD ReadBytes = 255;
constexpr ULONGLONG ReadLimitMilliseconds = 1000;
constexpr std::size_t ReplyLimitBytes = std::size_t{64} * 1024;

std::atomic<LineListener> lineListener{nullptr};

void TellListener(LineText way, const std::string& text) {
    if (const LineListener listener = lineListener.load()) {
        listener(way, text);
    }
}

/// Whether the open port has its time-outs.
bool timeOutsSet ZB_GUARDED_BY(ComLock) = false;

/// Without its time-outs a port may hold a read or a write, and with it ComLock, for ever. So they
/// are asked for again before anything is written, whatever became of the other settings.
bool EnsureTimeOuts() ZB_REQUIRES(ComLock) {
    COMMTIMEOUTS timeOuts = TimeOuts;
    if (!timeOutsSet && !SetCommTimeouts(ComHandle, &timeOuts)) {
        LogSystemError("ZbComOpen SetCommTimeouts Error: ", GetLastError());
        return false;
    }
    timeOutsSet = true;
    return true;
}

bool ConfigureOpenPort(const PortSettings& settings) ZB_REQUIRES(ComLock) {
    DCB line{};
    line.DCBlength = sizeof(line);
    if (!GetCommState(ComHandle, &line)) {
        LogSystemError("ZbComOpen GetCommState Error: ", GetLastError());
        return false;
    }
    line.BaudRate = settings.BaudRate;
    line.ByteSize = static_cast<BYTE>(settings.ByteSize);
    line.Parity = static_cast<BYTE>(settings.Parity);
    line.StopBits = static_cast<BYTE>(settings.StopBits);
    if (!SetCommState(ComHandle, &line)) {
        LogSystemError("ZbComOpen SetCommState Error: ", GetLastError());
        return false;
    }
    return EnsureTimeOuts();
}

}  // namespace

void ListenToLine(LineListener listener) {
    lineListener.store(listener);
}

int ZbComOpen() {
    const PortSettings settings = CurrentPortSettings();
    if (ComHandle != nullptr) {
        if (settings.Port == OpenPortNumber) {
            return 1;
        }
        ZbComClose();
    }
    char name[128];
    std::snprintf(name, sizeof(name), R"(\\.\COM%d)", static_cast<int>(settings.Port));
    WriteLine("ZbComOpen opening: ", name, "\n");
    const HANDLE port =
        CreateFileA(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        LogSystemError("ZbComOpen CreateFile Error: ", GetLastError());
        return 0;
    }
    ComHandle = port;
    OpenPortNumber = settings.Port;
    if (!ConfigureOpenPort(settings)) {
        return 0;
    }
    Sleep(1);
    return 1;
}

void ZbComClose() {
    if (ComHandle != nullptr) {
        CloseHandle(ComHandle);
        ComHandle = nullptr;
        OpenPortNumber = -1;
        timeOutsSet = false;
    }
}

bool ZbComWrite(const std::string& command, bool logEnabled) {
    if (ComHandle == nullptr) {
        return false;
    }
    TellListener(LineText::Sent, command);
    if (logEnabled) {
        WriteLine("ZbComWrite: ", command, "\n");
    }
    if (!EnsureTimeOuts()) {
        return false;
    }
    // Now and no sooner: to get here may have taken seconds.
    if (!MayUseLine()) {
        return false;
    }
    DWORD written = 0;
    if (!WriteFile(ComHandle, command.data(), static_cast<DWORD>(command.size()), &written,
                   nullptr)) {
        LogSystemError("ZbComWrite WriteFile Error: ", GetLastError());
        return false;
    }
    return true;
}

bool ZbComDropLateReply() {
    COMMTIMEOUTS atOnce{};
    atOnce.ReadIntervalTimeout = MAXDWORD;
    timeOutsSet = false;
    if (!SetCommTimeouts(ComHandle, &atOnce)) {
        return false;  // The write asks for time-outs again, and fails.
    }
    std::string late;
    char chunk[ReadBytes];
    DWORD count = 0;
    while (late.size() < ReplyLimitBytes &&
           ReadFile(ComHandle, chunk, ReadBytes, &count, nullptr) && count != 0) {
        late.append(chunk, count);
    }
    if (late.empty()) {
        return false;
    }
    WriteLine("LATE REPLY DROPPED ", late, "\n");
    return true;
}

bool ZbComRead(std::string& reply, bool logEnabled) {
    reply.clear();
    ReadBroke = false;
    const ULONGLONG start = GetTickCount64();
    while (GetTickCount64() - start < ReadLimitMilliseconds) {
        char chunk[ReadBytes + 1] = {};
        DWORD count = 0;
        if (!ReadFile(ComHandle, chunk, ReadBytes, &count, nullptr)) {
            LogSystemError("ZbComRead ReadFile Error: ", GetLastError());
            ReadBroke = true;
            return false;
        }
        if (count == 0) {
            WriteLine("ZbComRead timeout retry\n");
            continue;
        }
        chunk[count] = 0;
        // Only what is collected counts: a line-feed behind the limit ends nothing.
        const std::size_t room = ReplyLimitBytes - reply.size();
        const std::size_t kept = std::min(std::strlen(chunk), room);
        const std::string_view collected(chunk, kept);
        reply += collected;
        if (collected.find('\n') != collected.npos) {
            TellListener(LineText::Received, reply);
            if (logEnabled) {
                WriteLine("ZbComRead: ", reply, "\n");
            }
            return true;
        }
        LogChannel.WriteFormatted("ZbComRead partial \"%s\" byte count %d\n", chunk,
                                  static_cast<int>(count));
    }
    WriteLine("ZbComRead TIMEEOUT!\n");
    return false;
}

void LogSystemError(const char* prefix, std::uint32_t code) {
    NoteSystemError(code);
    LPWSTR message = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0x400, reinterpret_cast<LPWSTR>(&message), 0, nullptr);
    WriteLine(prefix);
    if (length == 0 || message == nullptr) {
        WriteLine("error ", std::to_string(code));
    } else {
        LogChannel.WriteWideText(message);
    }
    LocalFree(message);
    WriteLine("\n");
}
