#pragma once

#include <memory>
#include <string>

#include "simulator/transport.h"

namespace CLI {
class App;
}

namespace simulator {

/// The program's option that says where its line is: a pseudo-terminal on native builds, a serial
/// port on Windows.
class LineOption {
  public:
    /// Adds the option; `app` must not outlive this.
    void AddTo(CLI::App& app);
    /// Opens the line; throws std::system_error.
    std::unique_ptr<Transport> Open(unsigned bitsPerSecond) const;
    /// The option with a value, for people.
    static std::string Example();
    /// The line's name for people.
    std::string Name() const;

  private:
    std::string place_;
};

}  // namespace simulator
