#include "bare_line_posix.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <ctime>
#include <stdexcept>

namespace {

constexpr long Millisecond = 1'000'000;
constexpr timespec Pause{.tv_sec = 0, .tv_nsec = 10 * Millisecond};
constexpr timespec IdleLine{.tv_sec = 0, .tv_nsec = 20 * Millisecond};

/// The kernel would add 50 us to each wait of the thread.
void MakeWaitsPrecise() {
    thread_local bool done = false;
    if (!done) {
        done = true;
        prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    }
}

}  // namespace

BareLine::BareLine(const std::string& path)
    : file_(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (file_ < 0) {
        throw std::runtime_error(path);
    }
}

BareLine::~BareLine() {
    close(file_);
}

bool BareLine::Exchange(std::string_view request) {
    MakeWaitsPrecise();
    count_ = 0;
    if (write(file_, request.data(), request.size()) < 0) {
        return false;
    }
    clock_nanosleep(CLOCK_MONOTONIC, 0, &Pause, nullptr);
    pollfd entry{.fd = file_, .events = POLLIN, .revents = 0};
    do {
        const ssize_t got = read(file_, reply_ + count_, sizeof(reply_) - count_);
        count_ += got > 0 ? static_cast<std::size_t>(got) : 0;
    } while (ppoll(&entry, 1, &IdleLine, nullptr) > 0);
    return count_ != 0;
}
