#include <CLI/CLI.hpp>

#include "simulator/line_option.h"
#include "simulator/pty_transport.h"

namespace simulator {

void LineOption::AddTo(CLI::App& app) {
    app.add_option("--pty", place_,
                   "Make a pseudo-terminal and link it here, where a native\nhost looks for its "
                   "port: ~/.zb_machine/dosdevices/com3")
        ->required()
        ->type_name("LINK");
}

std::unique_ptr<Transport> LineOption::Open(unsigned /*bitsPerSecond*/) const {
    return std::make_unique<PtyTransport>(place_);
}

std::string LineOption::Example() {
    return "--pty ~/.zb_machine/dosdevices/com3";
}

std::string LineOption::Name() const {
    return place_;
}

}  // namespace simulator
