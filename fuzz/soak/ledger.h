#pragma once

#include <chrono>
#include <vector>

#include "usage/usage.h"

namespace soak {

/// What the process held, always at the same point of a life of the module.
class Ledger {
  public:
    void Enter(std::chrono::seconds time);
    /// Some of the entries, and by how much the last third of all lies above the first.
    void Print() const;
    /// Whether there are enough entries, and the last third lies above the first by no more than
    /// its tolerance.
    bool IsSteady() const;

  private:
    struct Entry {
        std::chrono::seconds time;
        Usage usage;
    };

    double Growth(std::size_t column) const;

    std::vector<Entry> entries_;
};

}  // namespace soak
