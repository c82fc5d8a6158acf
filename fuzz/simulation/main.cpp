#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <span>
#include <vector>

#include "simulation/life.h"

namespace {

using simulation::Plan;
using simulation::Report;

struct Options {
    std::uint64_t seed = 1;
    double hours = 1;
    std::int64_t life = -1;
    unsigned jobs = 2;
    bool keys = false;
    std::string trace;
};

/// The lives that make up so many hours. The first one is lived twice, to see that it goes the same
/// way again.
std::vector<std::uint64_t> LivesOf(const Options& options) {
    if (options.life >= 0) {
        return {static_cast<std::uint64_t>(options.life)};
    }
    std::vector<std::uint64_t> lives{0};
    for (double hours = 0; hours < options.hours;) {
        const Plan plan = simulation::MakePlan(options.seed, lives.size() - 1, options.keys);
        hours += std::chrono::duration<double, std::ratio<3600>>(plan.length).count();
        lives.push_back(lives.size() - 1);
    }
    return lives;
}

/// Lives in a process of its own, since a module that was stopped can't be started again.
[[noreturn]] void LiveAndEnd(const Options& options, std::uint64_t life, Report& report) {
    constexpr unsigned LongestRealTime = 900;
    alarm(LongestRealTime);
    setenv("ZB_MACHINE_ROOT", report.root, 1);  // NOLINT(concurrency-mt-unsafe): one thread yet.
    std::FILE* trace = options.trace.empty() ? nullptr : std::fopen(options.trace.c_str(), "w");
    simulation::Live(simulation::MakePlan(options.seed, life, options.keys), report, trace);
    std::exit(EXIT_SUCCESS);  // NOLINT(concurrency-mt-unsafe): one thread again.
}

class Campaign {
  public:
    explicit Campaign(const Options& options) : options_(options), lives_(LivesOf(options)) {
        void* memory = mmap(nullptr, lives_.size() * sizeof(Report), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        reports_ = {static_cast<Report*>(memory), lives_.size()};
    }

    /// Whether all lives kept the rules.
    bool Run() {
        for (std::size_t next = 0; next < lives_.size() || !running_.empty();) {
            if (next < lives_.size() && running_.size() < options_.jobs) {
                Begin(next++);
            } else {
                AwaitOne();
            }
        }
        if (options_.life < 0 && reports_[0].digest != reports_[1].digest) {
            ++failed_;
            std::printf("FAILED: life 0 went two ways\n");
        }
        if (!HasMendedEnough()) {
            ++failed_;
            std::printf("FAILED: too few lines were lost and came back\n");
        }
        return failed_ == 0;
    }

    std::span<const Report> Reports() const { return reports_; }

  private:
    /// At least one return in four lives with the keys on, once there are some.
    bool HasMendedEnough() const {
        std::uint64_t withKeys = 0;
        std::uint64_t returns = 0;
        for (const Report& report : reports_) {
            withKeys += report.bothKeys ? 1 : 0;
            returns += report.returns;
        }
        return 4 * returns >= withKeys || withKeys < 4;
    }

    void Begin(std::size_t index) {
        Report& report = reports_[index];
        const auto root = std::filesystem::temp_directory_path() / "zb_life_XXXXXX";
        root.string().copy(report.root, sizeof report.root - 1);
        if (mkdtemp(report.root) == nullptr) {
            throw std::runtime_error("no folder for a machine");
        }
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            LiveAndEnd(options_, lives_[index], report);
        }
        running_[child] = index;
    }

    void AwaitOne() {
        int status = 0;
        const auto ended = running_.extract(wait(&status));
        const std::size_t index = ended.mapped();
        const Report& report = reports_[index];
        std::filesystem::remove_all(report.root);
        if (status != 0 || !report.over) {
            ++failed_;
            std::printf("FAILED %s (status 0x%x)\n  again: simulation --seed %llu --life %llu%s\n",
                        report.violation, static_cast<unsigned>(status),
                        static_cast<unsigned long long>(options_.seed),
                        static_cast<unsigned long long>(lives_[index]),
                        options_.keys ? " --both-keys" : "");
        }
    }

    const Options& options_;
    const std::vector<std::uint64_t> lives_;
    std::span<Report> reports_;
    std::map<pid_t, std::size_t> running_;
    int failed_ = 0;
};

void Print(std::span<const Report> reports, double realSeconds) {
    constexpr const char* Names[] = {"lost",       "misheard", "silence", "delay",    "late",
                                     "split",      "dropped",  "doubled", "garbled",  "no CR",
                                     "no LF",      "no end",   "NUL",     "oversize", "refusal",
                                     "axis error", "cable",    "reset"};
    static_assert(std::size(Names) == simulation::FaultCount);
    const auto sum = [&](auto field) {
        std::uint64_t total = 0;
        for (const Report& one : reports) {
            total += one.*field;
        }
        return static_cast<unsigned long long>(total);
    };
    double seconds = 0;
    std::uint64_t digest = 0;
    for (const Report& one : reports) {
        seconds += one.seconds;
        digest = digest * 31 + one.digest;
    }
    std::printf("%zu lives, %.1f h in %.1f s, %.0f times real time, digest %016llx\n",
                reports.size(), seconds / 3600, realSeconds, seconds / realSeconds,
                static_cast<unsigned long long>(digest));
    std::printf("exchanges %llu, good positions %llu (joined %llu, mixed %llu)\n",
                sum(&Report::exchanges), sum(&Report::goodPolls), sum(&Report::joined),
                sum(&Report::mixed));
    double longestReturn = 0;
    unsigned long long withKeys = 0;
    for (const Report& one : reports) {
        longestReturn = std::max(longestReturn, one.longestReturn);
        withKeys += one.bothKeys ? 1 : 0;
    }
    std::printf(
        "both keys in %llu lives: lost %llu, back %llu, longest return %.1f s, digits garbled "
        "%llu, "
        "answers to older questions %llu\n",
        withKeys, sum(&Report::losses), sum(&Report::returns), longestReturn, sum(&Report::garbled),
        sum(&Report::older));
    std::printf("snapshots %llu, readings of the health %llu, latches %llu, lamp values %llu\n",
                sum(&Report::snapshots), sum(&Report::readings), sum(&Report::latches),
                sum(&Report::lamps));
    std::printf("moves %llu, accepted %llu, told %llu, excused %llu\n", sum(&Report::movesAsked),
                sum(&Report::movesAccepted), sum(&Report::movesTold), sum(&Report::movesExcused));
    std::printf("homings %llu, broken off %llu, axes homed %llu\n", sum(&Report::homings),
                sum(&Report::homingsBrokenOff), sum(&Report::axesHomed));
    std::printf("faults:");
    for (std::size_t fault = 0; fault < std::size(Names); ++fault) {
        std::uint64_t total = 0;
        for (const Report& one : reports) {
            total += one.faults[fault];
        }
        std::printf(" %s %llu,", Names[fault], static_cast<unsigned long long>(total));
    }
    std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    CLI::App app(
        "Lets the module live for hours of simulated time, among hosts, operators and "
        "faults, and holds it to its rules. One seed gives one course of events.");
    app.add_option("--seed", options.seed, "what chance starts from")->capture_default_str();
    app.add_option("--hours", options.hours, "simulated hours, at least")->capture_default_str();
    app.add_option("--life", options.life, "only this life of the seed");
    app.add_flag("--both-keys", options.keys, "Reopen and StrictReplies on in all lives, not half");
    app.add_option("--jobs", options.jobs, "lives at a time")->capture_default_str();
    app.add_option("--trace", options.trace, "writes what happens in the one life to this file");
    CLI11_PARSE(app, argc, argv);
    const auto start = std::chrono::steady_clock::now();
    Campaign campaign(options);
    const bool kept = campaign.Run();
    Print(campaign.Reports(),
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return kept ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "simulation: %s\n", failure.what());
    return EXIT_FAILURE;
}
