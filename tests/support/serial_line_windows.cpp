#include <array>
#include <stdexcept>

#include "platform/win32.h"
#include "support/serial_line.h"

namespace test_support {
namespace {

constexpr int PortNumber = 3;
constexpr DWORD ReadWrite = GENERIC_READ | GENERIC_WRITE;

HANDLE Open(const char* name) {
    const HANDLE port = CreateFileA(name, ReadWrite, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        throw std::runtime_error(std::string(name) + " does not open");
    }
    return port;
}

/// Takes all bytes that are left from before; they may still be on their way.
void Drain(HANDLE port) {
    COMMTIMEOUTS timeouts{};
    timeouts.ReadTotalTimeoutConstant = 50;
    SetCommTimeouts(port, &timeouts);
    std::array<char, 256> buffer{};
    DWORD count = 0;
    do {
        if (ReadFile(port, buffer.data(), DWORD{buffer.size()}, &count, nullptr) == FALSE) {
            throw std::runtime_error("the line does not drain");
        }
    } while (count != 0);
}

}  // namespace

struct SerialLine::State {
    HANDLE end;
};

SerialLine::SerialLine() : state_(std::make_unique<State>(State{Open(R"(\\.\COM4)")})) {
    const HANDLE port = Open(R"(\\.\COM3)");
    Drain(port);
    CloseHandle(port);
    Drain(state_->end);
}

SerialLine::~SerialLine() {
    CloseHandle(state_->end);
}

int SerialLine::Port() const {
    return PortNumber;
}

std::string SerialLine::Read(std::chrono::milliseconds limit) {
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = 20;
    timeouts.ReadTotalTimeoutConstant = static_cast<DWORD>(limit.count());
    SetCommTimeouts(state_->end, &timeouts);
    std::array<char, 256> buffer{};
    DWORD count = 0;
    ReadFile(state_->end, buffer.data(), DWORD{buffer.size()}, &count, nullptr);
    return {buffer.data(), count};
}

void SerialLine::Write(std::string_view bytes) {
    DWORD count = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    if (WriteFile(state_->end, bytes.data(), size, &count, nullptr) == FALSE || count != size) {
        throw std::runtime_error("write to the line");
    }
}

}  // namespace test_support
