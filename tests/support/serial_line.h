#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace test_support {

/// The other end of a serial port's line: natively a pseudo-terminal made for it, on Windows port 4
/// of a null modem that joins it to port 3. One at a time.
class SerialLine {
  public:
    /// Makes the line ready, with nothing in it. Throws std::runtime_error if it cannot.
    SerialLine();
    /// Natively the port sees a hang-up.
    ~SerialLine();
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    /// The number of the port that talks to this end.
    int Port() const;

    /// What the port wrote; empty if nothing came within the limit.
    std::string Read(std::chrono::milliseconds limit);

    void Write(std::string_view bytes);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace test_support
