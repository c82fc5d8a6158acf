#include "failing_calls/campaign.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "failing_calls/life.h"

namespace failing {
namespace {

constexpr unsigned LongestRealTime = 60;
constexpr Remains Unbounded{std::numeric_limits<std::uint32_t>::max(),
                            std::numeric_limits<std::uint32_t>::max()};

/// In memory if there is such a place, since a life makes and removes some twenty files.
void MakeRoot(Report& report) {
    const std::filesystem::path memory = "/dev/shm";
    const auto folder =
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    (folder / "zb_failing_XXXXXX").string().copy(report.root, sizeof report.root - 1);
    if (mkdtemp(report.root) == nullptr) {
        throw std::runtime_error("no folder for a machine");
    }
}

std::string EndOf(int status, const Report& report) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return number == SIGALRM ? "hangs" : "crashes with signal " + std::to_string(number);
    }
    return report.violation[0] != 0 ? report.violation
                                    : "ends with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

const char* NameOf(Mode mode) {
    return mode == Mode::Once ? "once" : mode == Mode::Function ? "function" : "all";
}

Campaign::Campaign(const Options& options) : options_(options), freeSlots_(options.jobs) {
    void* memory = mmap(nullptr, options.jobs * sizeof(Report), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    reports_ = {static_cast<Report*>(memory), options.jobs};
    std::iota(freeSlots_.begin(), freeSlots_.end(), std::size_t{0});
}

void Campaign::Begin(const Operation& operation, const Plan& plan) {
    if (freeSlots_.empty()) {
        AwaitOne(operation);
    }
    const Life life{freeSlots_.back(), plan};
    freeSlots_.pop_back();
    Report& report = ReportOf(life);
    report = {};
    MakeRoot(report);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        alarm(LongestRealTime);
        setenv("ZB_MACHINE_ROOT", report.root, 1);  // NOLINT(concurrency-mt-unsafe): one thread.
        Live(operation, plan, plan.call == 0 ? Unbounded : bounds_, report);
        std::exit(EXIT_SUCCESS);  // NOLINT(concurrency-mt-unsafe): one thread again.
    }
    running_[child] = life;
    ++lives_;
}

void Campaign::AwaitOne(const Operation& operation) {
    int status = 0;
    const auto ended = running_.extract(wait(&status));
    const Life& life = ended.mapped();
    const Report& report = ReportOf(life);
    std::filesystem::remove_all(report.root);
    freeSlots_.push_back(life.slot);
    const bool isBroken = status != 0 || !report.over;
    broken_ += isBroken ? 1 : 0;
    hits_ += report.failed[0] != 0 ? 1 : 0;
    if (isBroken || options_.verbose) {
        std::printf("%s %s, call %u (%s), %s: %s\n", isBroken ? "FAILED" : "kept", operation.name,
                    life.plan.call, report.failed, NameOf(life.plan.mode),
                    isBroken ? EndOf(status, report).c_str() : "well");
    }
    if (isBroken) {
        std::printf("  again: failing_calls --operation '%s' --call %u --mode %s\n", operation.name,
                    life.plan.call, NameOf(life.plan.mode));
    }
    if (life.plan.call == 0) {
        fair_ = report;
    }
}

std::vector<std::uint32_t> Campaign::Chosen() {
    std::vector<std::uint32_t> first;
    for (const Place& place : std::span(fair_.places).first(fair_.placeCount)) {
        if (seenWays_.insert(place.way).second) {
            first.push_back(place.call);
        }
    }
    if (options_.call != 0) {
        return {options_.call};
    }
    if (options_.isShort) {
        return first;
    }
    std::vector<std::uint32_t> all(fair_.calls);
    std::iota(all.begin(), all.end(), 1U);
    return all;
}

void Campaign::RunOperation(const Operation& operation) {
    Begin(operation, {});
    AwaitOne(operation);
    bounds_ = fair_.remains;
    const std::size_t before = seenWays_.size();
    const std::vector<std::uint32_t> chosen = Chosen();
    for (const Mode mode : options_.modes) {
        for (const std::uint32_t call : chosen) {
            Begin(operation, {call, mode});
        }
    }
    while (!running_.empty()) {
        AwaitOne(operation);
    }
    std::printf("%-22s %5u calls from %3u places, %3zu of them new\n", operation.name, fair_.calls,
                fair_.placeCount, seenWays_.size() - before);
    ++operations_;
    calls_ += fair_.calls;
}

bool Campaign::Run() {
    for (const Operation& operation : Operations()) {
        if (options_.operation.empty() || options_.operation == operation.name) {
            RunOperation(operation);
        }
    }
    return broken_ == 0 && operations_ != 0;
}

void Campaign::PrintSummary(double seconds) const {
    const auto number = [](std::uint64_t count) { return static_cast<unsigned long long>(count); };
    std::printf(
        "failing calls: %u operations with %llu calls from %zu places, %llu lives, a call failed "
        "in %llu, %llu broken, %.1f s\n",
        operations_, number(calls_), seenWays_.size(), number(lives_), number(hits_),
        number(broken_), seconds);
}

}  // namespace failing
