#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/posix/machine.h"
#include "support/serial_line.h"

namespace test_support {
namespace {

constexpr int PortNumber = 3;

std::filesystem::path Link() {
    return std::filesystem::path(MachineRoot()) / "dosdevices" /
           ("com" + std::to_string(PortNumber));
}

/// The pseudo-terminal's port side, raw: its default settings would echo and translate.
int OpenPortSide(const char* name) {
    const int file = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios line{};
    if (file < 0 || tcgetattr(file, &line) != 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
    cfmakeraw(&line);
    tcsetattr(file, TCSANOW, &line);
    return file;
}

}  // namespace

struct SerialLine::State {
    int end;
    int portSide;  // Held open, so that the line does not end when the port is closed.
};

SerialLine::SerialLine() {
    const int end = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    std::array<char, 64> name{};
    if (end < 0 || grantpt(end) != 0 || unlockpt(end) != 0 ||
        ptsname_r(end, name.data(), name.size()) != 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
    state_ = std::make_unique<State>(State{.end = end, .portSide = OpenPortSide(name.data())});
    std::filesystem::remove(Link());
    std::filesystem::create_symlink(name.data(), Link());
}

SerialLine::~SerialLine() {
    close(state_->end);
    close(state_->portSide);
    std::error_code ignored;
    std::filesystem::remove(Link(), ignored);
}

int SerialLine::Port() const {
    return PortNumber;
}

std::string SerialLine::Read(std::chrono::milliseconds limit) {
    pollfd entry{.fd = state_->end, .events = POLLIN, .revents = 0};
    std::array<char, 256> buffer{};
    if (poll(&entry, 1, static_cast<int>(limit.count())) <= 0) {
        return {};
    }
    const ssize_t count = read(state_->end, buffer.data(), buffer.size());
    return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

void SerialLine::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(state_->end, bytes.data(), bytes.size());
        if (count <= 0) {
            throw std::runtime_error("write to the line");
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace test_support
