#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>

#include "bare_line_posix.h"
#include "life_bench.h"
#include "own_line_posix.h"

namespace {

using Clock = std::chrono::steady_clock;

/// The module's cycle with nothing around it: one thread that waits, asks, and stores what it
/// reads, and that asks for the slow values when half a second has passed.
class Bare {
  public:
    explicit Bare(unsigned poll) : poll_(poll), line_((Controller(), Line().Path())) {
        line_.Exchange("@SMOD=1\r\n");
        thread_ = std::thread([this] { Run(); });
    }
    ~Bare() { Stop(); }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;

    static simulator::Controller& Controller() { return Line().Controller(); }
    static double LoadSeconds() { return 0; }
    std::int32_t Position() {
        const std::lock_guard hold(lock_);
        return position_;
    }
    void Stop() {
        if (thread_.joinable()) {
            stop_ = true;
            while (!finished_) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            thread_.join();
        }
    }

  private:
    static OwnLine& Line() {
        static OwnLine line("bare", 0);
        return line;
    }

    void Ask() {
        line_.Exchange("@CPOSMR?\r\n");
        std::string reply(line_.Reply());
        char* rest = nullptr;
        strtok_r(reply.data(), "=", &rest);
        const char* const x = strtok_r(nullptr, ",", &rest);
        const std::lock_guard hold(lock_);
        position_ = x != nullptr ? static_cast<std::int32_t>(std::atol(x)) : 0;
    }

    void Run() {
        std::mutex wakeLock;
        std::unique_lock hold(wakeLock);
        auto status = Clock::now();
        while (!stop_) {
            wake_.wait_for(hold, poll_);
            Ask();
            if (Clock::now() - status > std::chrono::milliseconds(500)) {
                status = Clock::now();
                line_.Exchange("@SSWC?\r\n");
                line_.Exchange("@LABR?\r\n");
            }
        }
        finished_ = true;
    }

    const std::chrono::milliseconds poll_;
    BareLine line_;
    std::mutex lock_;
    std::int32_t position_ = 0;
    std::condition_variable wake_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> finished_{false};
    std::thread thread_;
};
[[maybe_unused]] const bool registered = RegisterLife<Bare>("floor");

}  // namespace
