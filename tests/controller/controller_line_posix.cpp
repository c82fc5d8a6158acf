#include "controller/controller_line.h"
#include "native/machine.h"
#include "simulator/pty_transport.h"

namespace test_support {

std::unique_ptr<simulator::Transport> OpenControllerEnd() {
    const std::filesystem::path devices = std::filesystem::path(MachineRoot()) / "dosdevices";
    std::filesystem::create_directories(devices);
    return std::make_unique<simulator::PtyTransport>(devices / "com3");
}

}  // namespace test_support
