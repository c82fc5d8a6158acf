#pragma once

#include <memory>

#ifdef OVISK_JUMPING_CLOCK
#include "controller/jumping_controller.h"
#else
#include "simulator/controller.h"
#include "simulator/transport.h"
#endif

namespace test_support {

/// The number of the port that the module opens.
inline constexpr int ModulePort = 3;

#ifdef OVISK_JUMPING_CLOCK

class SimulatedController {
  public:
    explicit SimulatedController(const simulator::DeviceSettings& settings = {.bitsPerSecond = 0})
        : controller_(ModulePort, settings) {}
    JumpingController* operator->() { return &controller_; }

  private:
    JumpingController controller_;
};

#else

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

  private:
    std::unique_ptr<simulator::Transport> line_;
    simulator::Controller controller_;
};

#endif

}  // namespace test_support
