#include "peers/line_end_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "native/machine.h"

namespace peers {
namespace {

constexpr int LookMilliseconds = 5;

std::filesystem::path Link() {
    return std::filesystem::path(MachineRoot()) / "dosdevices" / "com3";
}

}  // namespace

LineEnd::LineEnd() {
    Open();
    thread_ = std::thread([this] { Run(); });
}

LineEnd::~LineEnd() {
    stop_ = true;
    thread_.join();
    Close();
}

void LineEnd::Open() {
    std::array<char, 64> name{};
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name.data(), name.size()) != 0) {
        throw std::system_error(errno, std::generic_category(), "pseudo-terminal");
    }
    slave_ = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (slave_ < 0 || tcgetattr(slave_, &settings) != 0) {
        throw std::system_error(errno, std::generic_category(), name.data());
    }
    cfmakeraw(&settings);
    tcsetattr(slave_, TCSANOW, &settings);
    std::filesystem::remove(Link());
    std::filesystem::create_symlink(name.data(), Link());
}

void LineEnd::Close() {
    if (master_ >= 0) {
        close(std::exchange(slave_, -1));
        close(std::exchange(master_, -1));
    }
}

void LineEnd::Place(std::int32_t x, std::int32_t y, std::int32_t z) {
    const std::lock_guard hold(mutex_);
    stage_.Place({static_cast<double>(x), static_cast<double>(y), static_cast<double>(z)});
}

std::size_t LineEnd::ReplyLength() {
    const std::lock_guard hold(mutex_);
    return protocol_.Answer("@CPOSMR?").size();
}

bool LineEnd::PullAt(const PullPlace& place) {
    std::unique_lock hold(mutex_);
    place_ = place;
    armed_ = true;
    return pulled_.wait_for(hold, std::chrono::seconds(20), [this] { return !armed_; });
}

void LineEnd::Replace() {
    const std::lock_guard hold(mutex_);
    Close();
    request_.clear();
    heard_ = 0;
    Open();
}

void LineEnd::Run() {
    while (!stop_) {
        std::unique_lock hold(mutex_);
        char byte = 0;
        while (master_ >= 0 && read(master_, &byte, 1) == 1) {
            Hear(byte);
        }
        pollfd source{.fd = master_, .events = POLLIN, .revents = 0};
        hold.unlock();
        poll(&source, 1, LookMilliseconds);
    }
}

void LineEnd::Hear(char byte) {
    ++heard_;
    request_ += byte;
    if (armed_ && !place_.inReply && request_ == PositionQuery.substr(0, place_.bytes)) {
        Close();
        armed_ = false;
        pulled_.notify_all();
    } else if (byte == '\n') {
        Answer();
        request_.clear();
    }
}

void LineEnd::Answer() {
    std::string reply = protocol_.Answer(std::string_view(request_).substr(0, request_.size() - 2));
    const bool pull = armed_ && place_.inReply && request_ == PositionQuery;
    reply.resize(pull ? place_.bytes : reply.size());
    [[maybe_unused]] const ssize_t written = write(master_, reply.data(), reply.size());
    if (pull) {
        if (place_.whenRead) {
            AwaitRead();
        }
        Close();
        armed_ = false;
        pulled_.notify_all();
    }
}

void LineEnd::AwaitRead() const {
    for (int left = 5000; left > 0; --left) {
        int waiting = 0;
        ioctl(slave_, FIONREAD, &waiting);
        if (waiting == 0) {
            return;
        }
        usleep(100);
    }
}

}  // namespace peers
