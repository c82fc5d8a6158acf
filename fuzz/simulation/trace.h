#pragma once

#include <cstdint>
#include <cstdio>
#include <string_view>

#include "simulation/report.h"

namespace simulation {

/// What happens in a life, line by line, with the time; two runs of one seed give the same lines.
class Trace {
  public:
    /// `file` may be null: then only the digest is kept.
    explicit Trace(std::FILE* file) : file_(file) {}

    void Note(std::string_view who, std::string_view what);
    std::uint64_t Digest() const { return digest_; }

  private:
    std::FILE* file_;
    std::uint64_t digest_ = 0xCBF29CE484222325;
};

/// The module has broken a rule: notes it and ends the process, without any clean-up.
[[noreturn]] void Violate(std::string_view rule, std::string_view text = {});

inline void Require(bool kept, std::string_view rule, std::string_view text = {}) {
    if (!kept) {
        Violate(rule, text);
    }
}

}  // namespace simulation
