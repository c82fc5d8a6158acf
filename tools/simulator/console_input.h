#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace simulator {

/// The lines of standard input, read by a thread of their own. That thread cannot be called back
/// from a read, so it is left to itself: a program that uses this ends with std::_Exit.
class ConsoleInput {
  public:
    ConsoleInput();

    /// The next line, or nothing if none came within `limit`.
    std::optional<std::string> Next(std::chrono::milliseconds limit);
    /// True once the input has ended and all its lines have been taken.
    bool Ended() const;

  private:
    struct State;

    /// Shared with the reading thread, which may live longer than this.
    std::shared_ptr<State> state_;
};

}  // namespace simulator
