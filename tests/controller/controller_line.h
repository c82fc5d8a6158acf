#pragma once

#include <memory>

#include "simulator/controller.h"
#include "simulator/transport.h"

namespace test_support {

/// The number of the port that the module opens.
inline constexpr int ModulePort = 3;

/// The controller's end of the line to the module's port, with nothing left in it from before.
std::unique_ptr<simulator::Transport> OpenControllerEnd();

/// A simulated controller at the module's port, answering until it goes.
class SimulatedController {
  public:
    explicit SimulatedController(const simulator::DeviceSettings& settings = {.bitsPerSecond = 0})
        : line_(OpenControllerEnd()), controller_(*line_, settings) {
        controller_.Start();
    }
    simulator::Controller* operator->() { return &controller_; }
    simulator::Transport& Line() { return *line_; }

  private:
    std::unique_ptr<simulator::Transport> line_;
    simulator::Controller controller_;
};

}  // namespace test_support
