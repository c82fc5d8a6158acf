#include <algorithm>
#include <charconv>
#include <mutex>
#include <string_view>

#include "native/handle.h"
#include "native/serial_line.h"
#include "native/wide_text.h"

namespace posix {
namespace {

constexpr Deadline PerMillisecond = 1'000'000;

Deadline TotalDeadline(DWORD multiplier, DWORD constant, DWORD size) {
    if (multiplier == 0 && constant == 0) {
        return Never;
    }
    const std::uint64_t total = std::uint64_t{multiplier} * size + constant;
    constexpr std::uint64_t Longest = Never / PerMillisecond / 2;
    return Now() + static_cast<Deadline>(std::min(total, Longest)) * PerMillisecond;
}

class SerialPort : public Object {
  public:
    static constexpr Kind OwnKind = Kind::SerialPort;

    SerialPort(std::unique_ptr<SerialLine> line, const DCB& settings)
        : Object(OwnKind), line_(std::move(line)), settings_(settings) {}

    DCB Settings() const {
        const std::lock_guard hold(lock_);
        return settings_;
    }

    DWORD Configure(const DCB& settings) {
        const std::lock_guard hold(lock_);
        const DWORD error = line_->Apply(settings);
        if (error == ERROR_SUCCESS) {
            settings_ = settings;
            settings_.DCBlength = sizeof settings_;
        }
        return error;
    }

    void SetTimeouts(const COMMTIMEOUTS& timeouts) {
        const std::lock_guard hold(lock_);
        timeouts_ = timeouts;
    }

    /// Both count what was done and answer an error code.
    DWORD Read(char* buffer, DWORD size, DWORD& count);
    DWORD Write(const char* bytes, DWORD size, DWORD& count);

  private:
    COMMTIMEOUTS Timeouts() const {
        const std::lock_guard hold(lock_);
        return timeouts_;
    }

    const std::unique_ptr<SerialLine> line_;
    mutable std::mutex lock_;
    DCB settings_;
    COMMTIMEOUTS timeouts_{};
};

/// When a read that asked for `size` bytes gives up.
class ReadTimer {
  public:
    ReadTimer(const COMMTIMEOUTS& timeouts, DWORD size) : interval_(timeouts.ReadIntervalTimeout) {
        const DWORD multiplier = timeouts.ReadTotalTimeoutMultiplier;
        const DWORD constant = timeouts.ReadTotalTimeoutConstant;
        if (interval_ == MAXDWORD && multiplier == 0 && constant == 0) {
            deadline_ = 0;
            takeWhatIsThere_ = true;
        } else if (interval_ == MAXDWORD && multiplier == MAXDWORD) {
            deadline_ = TotalDeadline(0, constant, size);
            takeWhatIsThere_ = true;
        } else {
            deadline_ = TotalDeadline(multiplier, constant, size);
        }
    }

    void BytesCame() {
        if (takeWhatIsThere_) {
            next_ = 0;
        } else if (interval_ != 0) {
            next_ = Now() + Deadline{interval_} * PerMillisecond;
        }
    }

    Deadline Limit() const { return std::min(deadline_, next_); }

  private:
    DWORD interval_;
    bool takeWhatIsThere_ = false;
    Deadline deadline_ = Never;
    Deadline next_ = Never;
};

DWORD SerialPort::Read(char* buffer, DWORD size, DWORD& count) {
    ReadTimer timer(Timeouts(), size);
    while (count < size) {
        const ssize_t got = line_->Read(buffer + count, size - count);
        if (got < 0) {
            // Whatever came first is delivered; the next call fails.
            return count != 0 ? ERROR_SUCCESS : ERROR_BAD_COMMAND;
        }
        if (got > 0) {
            count += static_cast<DWORD>(got);
            timer.BytesCame();
        }
        // What was there has been taken: another read at once would mostly find nothing.
        if (count < size && !line_->AwaitBytes(timer.Limit())) {
            return ERROR_SUCCESS;
        }
    }
    return ERROR_SUCCESS;
}

DWORD SerialPort::Write(const char* bytes, DWORD size, DWORD& count) {
    const COMMTIMEOUTS timeouts = Timeouts();
    const Deadline deadline = TotalDeadline(timeouts.WriteTotalTimeoutMultiplier,
                                            timeouts.WriteTotalTimeoutConstant, size);
    while (count < size) {
        const ssize_t put = line_->Write(bytes + count, size - count);
        if (put < 0) {
            return ERROR_BAD_COMMAND;
        }
        if (put > 0) {
            count += static_cast<DWORD>(put);
        } else if (!line_->AwaitRoom(deadline)) {
            return ERROR_SUCCESS;
        }
    }
    return ERROR_SUCCESS;
}

/// The number in `\\.\COM<n>`; 0 for any other name.
unsigned PortNumber(std::string_view name) {
    constexpr std::string_view Prefix = R"(\\.\com)";
    unsigned number = 0;
    if (name.size() > Prefix.size() && SameFolded(name.substr(0, Prefix.size()), Prefix)) {
        const char* end = name.data() + name.size();
        const auto parsed = std::from_chars(name.data() + Prefix.size(), end, number);
        number = parsed.ec == std::errc() && parsed.ptr == end ? number : 0;
    }
    return number;
}

HANDLE OpenPort(unsigned number) {
    DCB settings{};
    std::unique_ptr<SerialLine> line;
    const DWORD error = OpenLine(number, line, settings);
    if (error != ERROR_SUCCESS) {
        return Fail(error, INVALID_HANDLE_VALUE);
    }
    const HANDLE handle = NewHandle(std::make_unique<SerialPort>(std::move(line), settings));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

/// What ReadFile and WriteFile have in common.
template <typename Buffer, typename Work>
BOOL Transfer(HANDLE file, Buffer buffer, LPDWORD done, LPOVERLAPPED overlapped, const Work& work) {
    if (overlapped != nullptr) {
        return Fail(ERROR_NOT_SUPPORTED);
    }
    if (buffer == nullptr || done == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *done = 0;
    const UseOf<SerialPort> port(file);
    if (!port) {
        return FALSE;
    }
    const DWORD error = work(port);
    Breathe();
    return error == ERROR_SUCCESS ? TRUE : Fail(error);
}

}  // namespace
}  // namespace posix

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                   DWORD creation, DWORD flags, HANDLE templateFile) {
    if (access != (GENERIC_READ | GENERIC_WRITE) || share != 0 || attributes != nullptr ||
        creation != OPEN_EXISTING || (flags != 0 && flags != FILE_ATTRIBUTE_NORMAL) ||
        templateFile != nullptr) {
        return posix::Fail(ERROR_NOT_SUPPORTED, INVALID_HANDLE_VALUE);
    }
    const unsigned port = posix::PortNumber(name);
    if (port == 0) {
        return posix::Fail(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
    }
    return posix::Guarded(INVALID_HANDLE_VALUE, [&] { return posix::OpenPort(port); });
}

BOOL GetCommState(HANDLE file, LPDCB settings) {
    const posix::UseOf<posix::SerialPort> port(file);
    if (!port) {
        return FALSE;
    }
    *settings = port->Settings();
    return TRUE;
}

BOOL SetCommState(HANDLE file, LPDCB settings) {
    const posix::UseOf<posix::SerialPort> port(file);
    if (!port) {
        return FALSE;
    }
    const DWORD error = port->Configure(*settings);
    return error == ERROR_SUCCESS ? TRUE : posix::Fail(error);
}

BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts) {
    const posix::UseOf<posix::SerialPort> port(file);
    if (!port) {
        return FALSE;
    }
    if (timeouts->ReadIntervalTimeout == MAXDWORD &&
        timeouts->ReadTotalTimeoutMultiplier == MAXDWORD &&
        timeouts->ReadTotalTimeoutConstant == MAXDWORD) {
        return posix::Fail(ERROR_INVALID_PARAMETER);
    }
    port->SetTimeouts(*timeouts);
    return TRUE;
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    return posix::Transfer(file, buffer, read, overlapped, [&](const auto& port) {
        return port->Read(static_cast<char*>(buffer), size, *read);
    });
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped) {
    return posix::Transfer(file, buffer, written, overlapped, [&](const auto& port) {
        return port->Write(static_cast<const char*>(buffer), size, *written);
    });
}
