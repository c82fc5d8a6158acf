#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "exchange_bench.h"
#include "platform/posix/machine.h"

namespace {

constexpr long Millisecond = 1'000'000;
constexpr timespec Pause{.tv_sec = 0, .tv_nsec = 10 * Millisecond};
constexpr timespec IdleLine{.tv_sec = 0, .tv_nsec = 20 * Millisecond};

/// The line of the module: it has one user at a time.
int OpenLine() {
    const std::string name = MachineRoot() + "/dosdevices/com3";
    const int file = open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        throw std::runtime_error(name);
    }
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    return file;
}

/// Write, pause, read until the line is idle; the count of bytes.
std::size_t Exchange(int file) {
    std::array<char, 255> reply{};
    std::size_t count = 0;
    if (write(file, ExchangeRequest, std::strlen(ExchangeRequest)) < 0) {
        return 0;
    }
    clock_nanosleep(CLOCK_MONOTONIC, 0, &Pause, nullptr);
    pollfd entry{.fd = file, .events = POLLIN, .revents = 0};
    do {
        const ssize_t got = read(file, reply.data() + count, reply.size() - count);
        count += got > 0 ? static_cast<std::size_t>(got) : 0;
    } while (ppoll(&entry, 1, &IdleLine, nullptr) > 0);
    return count;
}

void Floor(benchmark::State& state) {
    EnsureExchangeLine();
    static const int file = OpenLine();
    for ([[maybe_unused]] auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        if (Exchange(file) == 0) {
            state.SkipWithError("no reply");
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
    }
}
BENCHMARK(Floor)->Name("exchange/floor")->Apply(MeasureOneByOne);

}  // namespace
