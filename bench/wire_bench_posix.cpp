#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "controller/controller_line.h"
#include "native/machine.h"
#include "running_worker.h"
#include "worker/lights.h"

namespace {

using Clock = std::chrono::steady_clock;

/// The other end of the module's line: notes when a request's first bytes come, and answers.
class StampingPeer {
  public:
    ~StampingPeer() {
        stop_ = true;
        thread_.join();
    }

    /// How long after now the next request comes, which `post` causes.
    template <typename Post>
    std::chrono::duration<double> TimeOf(Post post) {
        arrival_ = 0;
        const auto start = Clock::now();
        post();
        arrival_.wait(0);
        return Clock::time_point(Clock::duration(arrival_)) - start;
    }

  private:
    void Run() {
        while (!stop_) {
            const std::string request = line_->Read(std::chrono::milliseconds(50));
            if (!request.empty()) {
                arrival_ = Clock::now().time_since_epoch().count();
                arrival_.notify_one();
                line_->Write(">LBRT\r\n");
            }
        }
    }

    const std::unique_ptr<simulator::Transport> line_ = test_support::OpenControllerEnd();
    std::atomic<bool> stop_{false};
    std::atomic<Clock::rep> arrival_{0};
    std::thread thread_{[this] { Run(); }};
};

StampingPeer& Peer() {
    static StampingPeer peer;
    return peer;
}

/// A thread that does nothing but wake and write.
class BareWorker {
  public:
    BareWorker() : file_(open(Line().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
    ~BareWorker() {
        stop_ = true;
        Wake();
        thread_.join();
        close(file_);
    }

    void Wake() {
        posts_.fetch_add(1);
        posts_.notify_one();
    }

  private:
    static std::string Line() { return MachineRoot() + "/dosdevices/com3"; }

    void Run() {
        const std::string request = "@LBRT3=10000\r\n";
        for (unsigned seen = 0;; ++seen) {
            posts_.wait(seen);
            if (stop_ || write(file_, request.data(), request.size()) < 0) {
                return;
            }
        }
    }

    const int file_;
    std::atomic<bool> stop_{false};
    std::atomic<unsigned> posts_{0};
    std::thread thread_{[this] { Run(); }};
};

/// One post at a random moment, long after the exchange of the one before.
template <typename Post>
void MeasurePost(benchmark::State& state, Post post) {
    static std::minstd_rand random;
    std::uniform_int_distribution<int> microseconds(40'000, 60'000);
    for ([[maybe_unused]] auto _ : state) {
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        state.SetIterationTime(Peer().TimeOf(post).count());
    }
}

void Measure(benchmark::internal::Benchmark* bench) {
    bench->Iterations(1)->Repetitions(60)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

void Floor(benchmark::State& state) {
    Peer();
    static BareWorker worker;
    MeasurePost(state, [] { worker.Wake(); });
}
BENCHMARK(Floor)->Name("wire/floor")->Apply(Measure);

void Module(benchmark::State& state) {
    Peer();
    static const RunningWorker worker("[Ovisk]\nCmdPoll=600000\n");
    MeasurePost(state, [] { SetLight(3, 255); });
}
BENCHMARK(Module)->Name("wire/module")->Apply(Measure);

}  // namespace
