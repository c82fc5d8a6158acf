#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "failing_calls/operations.h"

namespace failing {

struct Options {
    std::string operation;   ///< empty: all
    std::uint32_t call = 0;  ///< 0: all
    std::vector<Mode> modes;
    bool isShort = false;  ///< one call from each place of the module in the whole campaign
    bool verbose = false;
    unsigned jobs = 2;
};

const char* NameOf(Mode mode);

/// Lives one life for each call that can fail and each mode, each in a process of its own.
class Campaign {
  public:
    explicit Campaign(const Options& options);
    /// Whether no rule was broken. Prints a line for each operation and for each broken rule.
    bool Run();
    void PrintSummary(double seconds) const;

  private:
    struct Life {
        std::size_t slot;
        Plan plan;
    };

    void RunOperation(const Operation& operation);
    /// The calls of the operation that are to fail.
    std::vector<std::uint32_t> Chosen();
    /// Begins a life as soon as one of the places for them is free.
    void Begin(const Operation& operation, const Plan& plan);
    void AwaitOne(const Operation& operation);
    Report& ReportOf(const Life& life) { return reports_[life.slot]; }

    const Options& options_;
    std::span<Report> reports_;
    std::vector<std::size_t> freeSlots_;
    std::map<pid_t, Life> running_;
    Remains bounds_{};
    Report fair_{};  ///< of the life in which nothing fails
    std::set<std::uint64_t> seenWays_;
    unsigned operations_ = 0;
    std::uint64_t calls_ = 0;
    std::uint64_t lives_ = 0;
    std::uint64_t hits_ = 0;
    std::uint64_t broken_ = 0;
};

}  // namespace failing
