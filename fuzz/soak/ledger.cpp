#include "soak/ledger.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

namespace soak {
namespace {

struct Column {
    const char* name;
    std::size_t Usage::*value;
    double unit;
    /// How far the mean of the last third may lie above that of the first.
    double tolerance;
};

constexpr double KiB = 1024;
constexpr std::array<Column, 4> Columns{{
    {"memory KiB", &Usage::memory, KiB, 4096},
    {"heap KiB", &Usage::heap, KiB, 256},
    // Wine keeps one or two more once windows of many threads have come and gone.
    {"handles", &Usage::handles, 1, 2.5},
    {"threads", &Usage::threads, 1, 0.5},
}};
constexpr std::size_t PrintedRows = 12;

template <typename Entries>
double Mean(const Entries& entries, const Column& column) {
    double sum = 0;
    for (const auto& entry : entries) {
        sum += static_cast<double>(entry.usage.*column.value) / column.unit;
    }
    return sum / static_cast<double>(std::max<std::size_t>(entries.size(), 1));
}

}  // namespace

void Ledger::Enter(std::chrono::seconds time) {
    entries_.push_back({time, Without(entries_.size(), MeasureUsage())});
}

double Ledger::Growth(std::size_t column) const {
    const std::span all(entries_);
    const std::size_t third = all.size() / 3;
    return Mean(all.last(third), Columns[column]) - Mean(all.first(third), Columns[column]);
}

void Ledger::Print() const {
    std::printf("%10s", "seconds");
    for (const Column& column : Columns) {
        std::printf(" %12s", column.name);
    }
    const std::size_t step = (entries_.size() + PrintedRows - 1) / PrintedRows;
    for (std::size_t i = 0; i < entries_.size(); i += step) {
        std::printf("\n%10lld", static_cast<long long>(entries_[i].time.count()));
        for (const Column& column : Columns) {
            std::printf(" %12.0f",
                        static_cast<double>(entries_[i].usage.*column.value) / column.unit);
        }
    }
    std::printf("\n%10s", "growth");
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        std::printf(" %+12.1f", Growth(i));
    }
    std::printf("\n%10s", "tolerance");
    for (const Column& column : Columns) {
        std::printf(" %+12.1f", column.tolerance);
    }
    std::printf("\n");
}

bool Ledger::IsSteady() const {
    constexpr std::size_t FewestEntries = 6;
    bool steady = entries_.size() >= FewestEntries;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        steady = steady && Growth(i) <= Columns[i].tolerance;
    }
    return steady;
}

}  // namespace soak
