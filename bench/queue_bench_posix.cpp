#include <benchmark/benchmark.h>

#include <cstdint>
#include <ctime>
#include <deque>
#include <mutex>
#include <string>

#include "link/command_queue.h"
#include "log/zbr_log.h"

namespace {

const std::string Command = "@LBRT3=10000\r\n";
constexpr std::uint32_t Lamp = 3;
constexpr std::int64_t MostPosts = 100'000;

/// The time of this thread on its processor: others may be busy too.
double OwnSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Times `work` on so many posts, `work` of one post each time it is run, and tells the time of
/// one.
template <typename Prepare, typename Work>
void MeasurePosts(benchmark::State& state, Prepare prepare, Work work) {
    const std::int64_t posts = state.range(0);
    for ([[maybe_unused]] auto _ : state) {
        prepare(posts);
        const double start = OwnSeconds();
        work(posts);
        state.SetIterationTime((OwnSeconds() - start) / static_cast<double>(posts));
    }
}

void Post(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        PostCommand(Lamp, Command);
    }
}

void EmptyQueue(std::int64_t /*posts*/) {
    // An event that nobody waits for, as while the worker is busy.
    [[maybe_unused]] static const bool opened = [] {
        CommandEvent.store(OpenCommandEvent());
        return true;
    }();
    const LockHold hold(CommandQueueLock);
    CommandQueue.clear();
}

void MeasureBatches(benchmark::internal::Benchmark* bench) {
    bench->Arg(1000)->Iterations(50)->Repetitions(5)->UseManualTime();
}

void PostFloor(benchmark::State& state) {
    std::recursive_mutex lock;
    std::deque<PostedCommand> queue;
    MeasurePosts(
        state, [&](std::int64_t) { queue.clear(); },
        [&](std::int64_t posts) {
            for (std::int64_t i = 0; i < posts; ++i) {
                const std::lock_guard hold(lock);
                queue.push_back({Lamp, Command});
            }
        });
}
BENCHMARK(PostFloor)->Name("post/floor")->Apply(MeasureBatches);

void PostModule(benchmark::State& state) {
    MeasurePosts(state, EmptyQueue, Post);
}
BENCHMARK(PostModule)->Name("post/module")->Apply(MeasureBatches);

void FillBlock() {
    WriteLine(std::string(4900, 'x'));
}

/// So many folded at once, and as many in all each time.
template <std::int64_t Posts>
void MeasureFold(benchmark::internal::Benchmark* bench) {
    bench->Arg(Posts)->Iterations(MostPosts / Posts)->Repetitions(3)->UseManualTime();
}

void FoldFloor(benchmark::State& state) {
    MeasurePosts(
        state, [](std::int64_t) { FillBlock(); },
        [](std::int64_t posts) {
            for (std::int64_t i = 0; i < posts; ++i) {
                WriteLine("ZbComPopUniqueCommandNoLock POPPED!\n");
            }
        });
}

void FoldModule(benchmark::State& state) {
    MeasurePosts(
        state,
        [](std::int64_t posts) {
            FillBlock();
            EmptyQueue(posts);
            Post(posts);
        },
        [](std::int64_t) {
            PostedCommand command;
            const LockHold hold(CommandQueueLock);
            ZbComPopUniqueCommandNoLock(command);
        });
}

BENCHMARK(FoldFloor)->Name("fold/floor")->Apply(MeasureFold<100>);
BENCHMARK(FoldModule)->Name("fold/module")->Apply(MeasureFold<100>);
BENCHMARK(FoldFloor)->Name("fold/floor")->Apply(MeasureFold<1'000>);
BENCHMARK(FoldModule)->Name("fold/module")->Apply(MeasureFold<1'000>);
BENCHMARK(FoldFloor)->Name("fold/floor")->Apply(MeasureFold<10'000>);
BENCHMARK(FoldModule)->Name("fold/module")->Apply(MeasureFold<10'000>);
BENCHMARK(FoldFloor)->Name("fold/floor")->Apply(MeasureFold<100'000>);
BENCHMARK(FoldModule)->Name("fold/module")->Apply(MeasureFold<100'000>);

}  // namespace
