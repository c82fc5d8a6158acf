#include "native/comm_settings.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cerrno>

#include "native/handle.h"

namespace posix {
namespace {

constexpr std::array<tcflag_t, 4> SizeBits = {CS5, CS6, CS7, CS8};
constexpr BYTE LeastByteSize = 5;
constexpr std::array<tcflag_t, 5> ParityBits = {0, PARENB | PARODD, PARENB,
                                                PARENB | PARODD | CMSPAR, PARENB | CMSPAR};
constexpr tcflag_t AllParityBits = PARENB | PARODD | CMSPAR;
constexpr tcflag_t FramingBits = CSIZE | AllParityBits | CSTOPB;

/// Pseudo-terminals have no framing to hold and keep 8 bits whatever they are asked for.
bool IsPseudoTerminal(int file) {
    struct stat status {};
    constexpr unsigned FirstMajor = 136;
    constexpr unsigned LastMajor = 143;
    return fstat(file, &status) == 0 && major(status.st_rdev) >= FirstMajor &&
           major(status.st_rdev) <= LastMajor;
}

DCB SettingsOf(const termios2& line) {
    DCB settings = PlainSettings();
    settings.BaudRate = line.c_ospeed;
    for (std::size_t i = 0; i < SizeBits.size(); ++i) {
        if ((line.c_cflag & CSIZE) == SizeBits[i]) {
            settings.ByteSize = static_cast<BYTE>(LeastByteSize + i);
        }
    }
    for (std::size_t i = 0; i < ParityBits.size(); ++i) {
        if ((line.c_cflag & AllParityBits) == ParityBits[i]) {
            settings.Parity = static_cast<BYTE>(i);
        }
    }
    if ((line.c_cflag & CSTOPB) != 0) {
        settings.StopBits = settings.ByteSize == LeastByteSize ? ONE5STOPBITS : TWOSTOPBITS;
    }
    return settings;
}

void MakeRaw(termios2& line) {
    line.c_iflag = 0;
    line.c_oflag = 0;
    line.c_lflag = 0;
    line.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
    line.c_cflag |= CREAD | CLOCAL;
    line.c_cc[VMIN] = 1;
    line.c_cc[VTIME] = 0;
}

void Put(const DCB& settings, termios2& line) {
    MakeRaw(line);
    line.c_cflag &= ~static_cast<tcflag_t>(FramingBits | CBAUD | (CBAUD << IBSHIFT));
    line.c_cflag |= BOTHER | (BOTHER << IBSHIFT);
    line.c_cflag |= SizeBits[settings.ByteSize - std::size_t{LeastByteSize}];
    line.c_cflag |= ParityBits[settings.Parity];
    line.c_cflag |= settings.StopBits != ONESTOPBIT ? CSTOPB : 0U;
    line.c_cflag |= settings.fOutxCtsFlow != 0 ? CRTSCTS : 0U;
    line.c_iflag |= settings.fOutX != 0 ? IXON : 0U;
    line.c_iflag |= settings.fInX != 0 ? IXOFF : 0U;
    line.c_cc[VSTART] = static_cast<cc_t>(settings.XonChar);
    line.c_cc[VSTOP] = static_cast<cc_t>(settings.XoffChar);
    line.c_ispeed = settings.BaudRate;
    line.c_ospeed = settings.BaudRate;
}

/// Raises or lowers DTR and RTS. Lines without such wires, as pseudo-terminals, have nothing to do.
void SetWires(int file, const DCB& settings) {
    const auto set = [file](int wire, bool up) { ioctl(file, up ? TIOCMBIS : TIOCMBIC, &wire); };
    set(TIOCM_DTR, settings.fDtrControl != DTR_CONTROL_DISABLE);
    if (settings.fRtsControl != RTS_CONTROL_HANDSHAKE) {
        set(TIOCM_RTS, settings.fRtsControl != RTS_CONTROL_DISABLE);
    }
}

}  // namespace

DCB PlainSettings() {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    settings.BaudRate = 9600;
    settings.fBinary = 1;
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fRtsControl = RTS_CONTROL_ENABLE;
    settings.ByteSize = 8;
    settings.XonChar = 0x11;
    settings.XoffChar = 0x13;
    return settings;
}

bool AreAcceptable(const DCB& settings) {
    if (settings.BaudRate == 0 || settings.ByteSize < LeastByteSize || settings.ByteSize > 8 ||
        settings.Parity > SPACEPARITY || settings.StopBits > TWOSTOPBITS) {
        return false;
    }
    const bool five = settings.ByteSize == LeastByteSize;
    if ((settings.StopBits == ONE5STOPBITS && !five) ||
        (settings.StopBits == TWOSTOPBITS && five)) {
        return false;
    }
    const bool handshake = settings.fRtsControl == RTS_CONTROL_HANDSHAKE;
    return settings.XonChar != settings.XoffChar && settings.fOutxDsrFlow == 0 &&
           settings.fDsrSensitivity == 0 && settings.fErrorChar == 0 && settings.fNull == 0 &&
           settings.fAbortOnError == 0 && settings.fDtrControl <= DTR_CONTROL_ENABLE &&
           settings.fRtsControl <= RTS_CONTROL_HANDSHAKE &&
           handshake == (settings.fOutxCtsFlow != 0);
}

DWORD TakeOverLine(int file, DCB& settings) {
    termios2 line{};
    if (ioctl(file, TCGETS2, &line) != 0) {
        // A serial port without hardware behind it opens, but answers nothing.
        return errno == EIO ? ERROR_FILE_NOT_FOUND : ERROR_INVALID_FUNCTION;
    }
    settings = SettingsOf(line);
    MakeRaw(line);
    return ioctl(file, TCSETS2, &line) == 0 ? ERROR_SUCCESS : ErrorOf(errno);
}

DWORD ApplySettings(int file, const DCB& settings) {
    if (!AreAcceptable(settings)) {
        return ERROR_INVALID_PARAMETER;
    }
    termios2 before{};
    if (ioctl(file, TCGETS2, &before) != 0) {
        return ERROR_BAD_COMMAND;
    }
    termios2 wanted = before;
    Put(settings, wanted);
    termios2 real{};
    if (ioctl(file, TCSETS2, &wanted) != 0 || ioctl(file, TCGETS2, &real) != 0) {
        return ErrorOf(errno);
    }
    // The system takes what a driver cannot do without a word and sets something near it.
    const bool sameFraming = ((real.c_cflag ^ wanted.c_cflag) & FramingBits) == 0;
    if (!sameFraming && !IsPseudoTerminal(file)) {
        ioctl(file, TCSETS2, &before);
        return ERROR_INVALID_PARAMETER;
    }
    SetWires(file, settings);
    return ERROR_SUCCESS;
}

}  // namespace posix
