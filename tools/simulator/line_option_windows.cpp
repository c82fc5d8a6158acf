#include <CLI/CLI.hpp>

#include "simulator/com_transport.h"
#include "simulator/line_option.h"

namespace simulator {

void LineOption::AddTo(CLI::App& app) {
    app.add_option("--port", place_, "Serial port number: 4 is COM4")
        ->required()
        ->type_name("N")
        ->check(CLI::Range(1, 256));
}

std::unique_ptr<Transport> LineOption::Open(unsigned bitsPerSecond) const {
    return std::make_unique<ComTransport>(std::stoi(place_), bitsPerSecond);
}

std::string LineOption::Example() {
    return "--port 4";
}

std::string LineOption::Name() const {
    return "COM" + place_;
}

}  // namespace simulator
