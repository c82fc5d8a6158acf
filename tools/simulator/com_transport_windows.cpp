#include <algorithm>
#include <array>
#include <system_error>
#include <thread>

#include "platform/win32.h"
#include "simulator/com_transport.h"

namespace simulator {

namespace {

constexpr DWORD WriteLimit = 1000;

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

}  // namespace

ComTransport::ComTransport(int number, unsigned bitsPerSecond) {
    // This form reaches the ports above COM9 as well.
    const std::string name = "\\\\.\\COM" + std::to_string(number);
    port_ = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                        nullptr);
    if (port_ == INVALID_HANDLE_VALUE) {
        Fail(name);
    }
    try {
        SetUp(bitsPerSecond);
    } catch (...) {
        CloseHandle(port_);
        throw;
    }
}

ComTransport::~ComTransport() {
    CloseHandle(port_);
}

void ComTransport::SetUp(unsigned bitsPerSecond) {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (!GetCommState(port_, &settings)) {
        Fail("GetCommState");
    }
    if (bitsPerSecond != 0) {
        settings.BaudRate = bitsPerSecond;
    }
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    if (!SetCommState(port_, &settings)) {
        Fail("SetCommState");
    }
}

bool ComTransport::SetReadLimit(std::chrono::milliseconds limit) {
    if (limit == readLimit_) {
        return true;
    }
    COMMTIMEOUTS timeouts{};
    // All zero would mean no limit at all.
    timeouts.ReadTotalTimeoutConstant = std::max(1UL, static_cast<DWORD>(limit.count()));
    timeouts.WriteTotalTimeoutConstant = WriteLimit;
    if (!SetCommTimeouts(port_, &timeouts)) {
        return false;
    }
    readLimit_ = limit;
    return true;
}

std::string ComTransport::Read(std::chrono::nanoseconds limit) {
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(limit);
    std::array<char, 4096> buffer{};
    DWORD count = 0;
    const auto deadline = std::chrono::steady_clock::now() + wait;
    if (!SetReadLimit(wait) || !ReadFile(port_, buffer.data(), 1, &count, nullptr) || count == 0) {
        // A port that has gone fails or comes back empty at once and must not become a busy loop.
        std::this_thread::sleep_until(deadline);
        return {};
    }
    // One byte is waited for and the others are fetched: a read of many would wait for all of
    // them, and not every system knows the time-outs that say otherwise.
    COMSTAT state{};
    DWORD errors = 0;
    DWORD more = 0;
    if (ClearCommError(port_, &errors, &state) && state.cbInQue > 0) {
        const DWORD there = std::min<DWORD>(state.cbInQue, buffer.size() - 1);
        ReadFile(port_, buffer.data() + 1, there, &more, nullptr);
    }
    return {buffer.data(), count + more};
}

bool ComTransport::Write(std::string_view bytes) {
    DWORD count = 0;
    return WriteFile(port_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) &&
           count == bytes.size();
}

}  // namespace simulator
