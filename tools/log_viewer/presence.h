#pragma once

#include <memory>

namespace log_viewer {

/// Makes a viewer without a window of its own findable by its title, for as long as this lives: the
/// module announces lines only to a viewer that it finds.
class Presence {
  public:
    /// Throws std::runtime_error.
    Presence();
    ~Presence();
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace log_viewer
