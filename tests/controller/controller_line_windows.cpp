#include "controller/controller_line.h"
#include "simulator/com_transport.h"

namespace test_support {

std::unique_ptr<simulator::Transport> OpenControllerEnd() {
    auto line = std::make_unique<simulator::ComTransport>(4, 0);
    while (!line->Read(std::chrono::milliseconds(50)).empty()) {
    }
    return line;
}

}  // namespace test_support
