#pragma once

#include <string>

#include "native/machine.h"
#include "simulator/controller.h"
#include "simulator/pty_transport.h"

/// A line of its own, with a simulated controller of its own, beside that of the module.
class OwnLine {
  public:
    OwnLine(const std::string& name, unsigned bitsPerSecond)
        : path_(MachineRoot() + "/dosdevices/" + name),
          transport_(path_),
          controller_(transport_, {.bitsPerSecond = bitsPerSecond}) {
        controller_.Start();
    }
    const std::string& Path() const { return path_; }
    simulator::Controller& Controller() { return controller_; }

  private:
    std::string path_;
    simulator::PtyTransport transport_;
    simulator::Controller controller_;
};
