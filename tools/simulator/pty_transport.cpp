#include "simulator/pty_transport.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

namespace simulator {

namespace {

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void CloseIfOpen(int& descriptor) {
    if (descriptor >= 0) {
        close(std::exchange(descriptor, -1));
    }
}

std::filesystem::path NameOfSlave(int master) {
    std::array<char, 64> name{};
    if (grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, name.data(), name.size()) != 0) {
        Fail("pseudo-terminal");
    }
    return name.data();
}

/// Bytes pass unchanged and without an echo, also before the host has set up the port.
void MakeRaw(int descriptor) {
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0) {
        Fail("pseudo-terminal settings");
    }
    cfmakeraw(&settings);
    if (tcsetattr(descriptor, TCSANOW, &settings) != 0) {
        Fail("pseudo-terminal settings");
    }
}

}  // namespace

/// Keeps the line open for one call; holds -1 while the cable is out, and then counts as no user,
/// so that a pulled line is soon without users.
class PtyTransport::Borrowed {
  public:
    explicit Borrowed(PtyTransport& owner) : owner_(owner) {
        const std::lock_guard hold(owner_.mutex_);
        if (owner_.plugged_) {
            line = owner_.master_;
            ++owner_.users_;
        }
    }
    ~Borrowed() {
        if (line < 0) {
            return;
        }
        const std::lock_guard hold(owner_.mutex_);
        --owner_.users_;
        owner_.unused_.notify_all();
    }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    int line = -1;

  private:
    PtyTransport& owner_;
};

PtyTransport::PtyTransport(std::filesystem::path link) : link_(std::move(link)) {
    wake_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (wake_ < 0) {
        Fail("eventfd");
    }
    try {
        MakeLine();
        MakeLink();
    } catch (...) {
        CloseLine();
        CloseIfOpen(wake_);
        throw;
    }
    plugged_ = true;
}

PtyTransport::~PtyTransport() {
    PtyTransport::Unplug();
    CloseIfOpen(wake_);
}

void PtyTransport::MakeLine() {
    // A host that does not read must not hold up the controller: a full line loses bytes.
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (master_ < 0) {
        Fail("pseudo-terminal");
    }
    device_ = NameOfSlave(master_);
    // With its own hand on the far end the line outlives every host.
    slave_ = open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0) {
        Fail(device_.string());
    }
    MakeRaw(slave_);
}

void PtyTransport::MakeLink() {
    const auto status = std::filesystem::symlink_status(link_);
    if (std::filesystem::exists(status) && !std::filesystem::is_symlink(status)) {
        errno = EEXIST;
        Fail(link_.string());
    }
    // By way of a second name, so that a host never finds the link missing.
    const std::filesystem::path fresh = link_.string() + ".new";
    std::filesystem::remove(fresh);
    std::filesystem::create_symlink(device_, fresh);
    std::filesystem::rename(fresh, link_);
}

void PtyTransport::RemoveLink() {
    std::error_code ignored;
    if (std::filesystem::read_symlink(link_, ignored) == device_) {
        std::filesystem::remove(link_, ignored);
    }
}

void PtyTransport::CloseLine() {
    CloseIfOpen(slave_);
    CloseIfOpen(master_);
}

void PtyTransport::Unplug() {
    std::unique_lock hold(mutex_);
    if (!plugged_) {
        return;
    }
    plugged_ = false;
    RemoveLink();
    PtyTransport::Wake();
    unused_.wait(hold, [this] { return users_ == 0; });
    CloseLine();
}

void PtyTransport::Replug() {
    const std::lock_guard hold(mutex_);
    if (plugged_) {
        return;
    }
    try {
        MakeLine();
        MakeLink();
    } catch (...) {
        CloseLine();
        throw;
    }
    plugged_ = true;
}

void PtyTransport::Wake() {
    const std::uint64_t one = 1;
    // A full counter means that a wake-up is waiting already.
    [[maybe_unused]] const ssize_t written = write(wake_, &one, sizeof one);
}

std::string PtyTransport::Read(std::chrono::nanoseconds limit) {
    const Borrowed borrowed(*this);
    return ReadLine(borrowed.line, limit);
}

std::string PtyTransport::ReadLine(int line, std::chrono::nanoseconds limit) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    const timespec wait{seconds.count(), static_cast<long>((limit - seconds).count())};
    // A negative descriptor is passed over by poll, so a pulled cable just waits.
    std::array<pollfd, 2> sources{pollfd{line, POLLIN, 0}, pollfd{wake_, POLLIN, 0}};
    if (ppoll(sources.data(), sources.size(), &wait, nullptr) <= 0) {
        return {};
    }
    if ((sources[1].revents & POLLIN) != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t taken = read(wake_, &count, sizeof count);
    }
    std::array<char, 4096> buffer{};
    const ssize_t count = line < 0 ? 0 : read(line, buffer.data(), buffer.size());
    return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

bool PtyTransport::Write(std::string_view bytes) {
    const Borrowed borrowed(*this);
    if (borrowed.line < 0) {
        return false;
    }
    const ssize_t written = write(borrowed.line, bytes.data(), bytes.size());
    return written == static_cast<ssize_t>(bytes.size());
}

}  // namespace simulator
