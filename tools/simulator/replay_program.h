#pragma once

#include <functional>
#include <optional>
#include <string>

#include "simulator/console_input.h"
#include "simulator/controller.h"
#include "simulator/replay.h"

namespace CLI {
class App;
}

namespace simulator {

/// The program's options for replaying a saved log in the place of the simulated stage.
class ReplayOptions {
  public:
    static constexpr int StatusFollowed = 0;
    static constexpr int StatusDeparted = 3;
    static constexpr int StatusStoppedEarly = 4;
    static constexpr int StatusNoRecord = 5;

    /// `app` must not outlive this.
    void AddTo(CLI::App& app);

    bool Chosen() const { return !file_.empty(); }
    /// Reads the file and says what is in it. Nothing, and a message on standard error, if that is
    /// no exchange.
    std::optional<Trace> Read() const;
    ReplaySettings Settings() const;

  private:
    std::string file_;
    bool noTiming_ = false;
    ReplaySettings settings_;
};

/// Answers on the line from the trace and shows departures until `isOver`, or "quit" on standard
/// input. Gives the exit status.
int RunReplay(Transport& line, const std::string& lineName, DeviceSettings device, Trace trace,
              const ReplaySettings& settings, const std::function<bool(ConsoleInput&)>& isOver);

}  // namespace simulator
