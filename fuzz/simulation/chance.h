#pragma once

#include <cstdint>
#include <random>

namespace simulation {

/// Chance that is the same on every machine and from every compiler: the library's distributions
/// are not, nor are two draws in one list of arguments.
class Chance {
  public:
    explicit Chance(std::uint64_t seed) : engine_(seed) {}

    std::uint64_t Seed() { return engine_(); }
    /// Both ends included.
    std::int64_t Between(std::int64_t least, std::int64_t most) {
        const auto span = static_cast<std::uint64_t>(most - least) + 1;
        return least + static_cast<std::int64_t>(engine_() % span);
    }
    /// True once in so many times.
    bool OneIn(std::int64_t times) { return Between(1, times) == 1; }
    bool Percent(std::int64_t percent) { return Between(1, 100) <= percent; }
    template <class List>
    const auto& Of(const List& list) {
        return list[static_cast<std::size_t>(Between(0, std::ssize(list) - 1))];
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace simulation
