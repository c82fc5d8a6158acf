#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/console.h"
#include "simulator/console_input.h"
#include "simulator/control_port.h"
#include "simulator/controller.h"
#include "simulator/exerciser.h"
#include "simulator/help.h"
#include "simulator/line_option.h"
#include "simulator/replay_program.h"
#include "simulator/states.h"

namespace {

using simulator::AxisName;
using simulator::Device;
using simulator::StageModel;

constexpr int StatusGood = 0;
constexpr int StatusNoLine = 1;
constexpr int StatusBadCommandLine = 2;

std::atomic<bool> stopAsked{false};

extern "C" void AskToStop(int /*signal*/) {
    stopAsked = true;
}

struct Options {
    simulator::LineOption line;
    simulator::ReplayOptions replay;
    unsigned bitsPerSecond = 38'400;
    double latency = 0;
    double motionDelay = 0;
    double speed = simulator::AxisSettings{}.speed;
    std::string state = std::string(simulator::NamedStates().front().name);
    std::vector<std::int32_t> position;
    double timeFactor = 1;
    std::vector<std::string> faults;
    std::uint64_t seed = 1;
    std::optional<std::uint16_t> controlPort;
    bool quiet = false;
    bool exercise = false;
    bool exitOnEof = false;
};

/// Without its own text behind the type's name in the help.
CLI::Validator Validated(const CLI::Validator& validator) {
    return validator.description("");
}

std::string CheckState(const std::string& name) {
    const bool known =
        std::ranges::count(simulator::NamedStates(), name, &simulator::NamedState::name) > 0;
    return known ? "" : "there is no state " + name;
}

std::string CheckFault(const std::string& text) {
    return simulator::ParseFault(text) ? "" : "no fault and probability: " + text;
}

void AddStageOptions(CLI::App& app, Options& options) {
    app.add_option("--state", options.state, "How the stage is found at first, see STATES")
        ->check(CheckState)
        ->type_name("NAME")
        ->capture_default_str();
    app.add_option("--position", options.position,
                   "Where the axes stand at first, in counts, in that state")
        ->delimiter(',')
        ->expected(3)
        ->type_name("X,Y,Z");
    app.add_option("--speed", options.speed, "Speed of the axes in counts per second")
        ->check(Validated(CLI::PositiveNumber))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--motion-delay", options.motionDelay,
                   "Milliseconds from an accepted move to the first sign of\nmotion")
        ->check(Validated(CLI::NonNegativeNumber))
        ->type_name("MS")
        ->capture_default_str();
    app.add_option("--time-factor", options.timeFactor,
                   "The stage runs so many times faster, see TIME; up to 1000")
        ->check(Validated(CLI::Range(1e-6, simulator::HighestTimeFactor)))
        ->type_name("FACTOR")
        ->capture_default_str();
    app.add_flag("--exercise", options.exercise,
                 "Move the axes gently, change a switch and a lamp now and\n"
                 "then, turn the knobs in origin returns by hand; pauses for\n"
                 "commanded moves and origin returns");
}

void AddFaultOptions(CLI::App& app, Options& options) {
    app.add_option("--fault", options.faults,
                   "A fault, see FAULTS, and its probability for each request,\n"
                   "0 to 1. May be repeated")
        ->check(CheckFault)
        ->type_name("NAME=PROBABILITY")
        ->allow_extra_args(false);
    app.add_option("--seed", options.seed, "Where the chances of the faults begin")
        ->type_name("N")
        ->capture_default_str();
}

void AddOptions(CLI::App& app, Options& options) {
    options.line.AddTo(app);
    app.add_option("--baud", options.bitsPerSecond,
                   "Speed of the line in bits per second; 0: replies take no time")
        ->type_name("BITS")
        ->capture_default_str();
    app.add_option("--latency", options.latency, "Milliseconds from a request to its reply")
        ->check(Validated(CLI::NonNegativeNumber))
        ->type_name("MS")
        ->capture_default_str();
    AddStageOptions(app, options);
    AddFaultOptions(app, options);
    app.add_option("--control", options.controlPort,
                   "Take commands at this TCP port of 127.0.0.1, see COMMANDS;\n"
                   "0: at a free port. The port's number is shown")
        ->type_name("PORT");
    app.add_flag("--quiet", options.quiet, "Do not show the moves, settings and actions received");
    app.add_flag("--exit-on-eof", options.exitOnEof, "End when standard input ends");
    options.replay.AddTo(app);
    app.footer("\n" + simulator::HelpAfterOptions(simulator::LineOption::Example()));
}

simulator::Time Milliseconds(double count) {
    return std::chrono::duration_cast<simulator::Time>(
        std::chrono::duration<double, std::milli>(count));
}

void SetUp(Device& device, const Options& options) {
    StageModel& model = device.Model();
    simulator::EnterState(model, options.state);
    for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
        model.At(name).Settings().speed = options.speed;
        // A quarter of a second to full speed, whatever that is.
        model.At(name).Settings().acceleration = 4 * options.speed;
        if (!options.position.empty()) {
            model.At(name).Place(options.position[static_cast<std::size_t>(name)]);
        }
    }
    model.SetMotionDelay(Milliseconds(options.motionDelay));
    device.SetTimeFactor(options.timeFactor);
    device.FaultsOfLine().SetSeed(options.seed);
    for (const std::string& text : options.faults) {
        if (const auto fault = simulator::ParseFault(text)) {
            device.FaultsOfLine().Set(fault->first, fault->second);
        }
    }
}

/// Opens the control port if one is wanted, and says where.
std::unique_ptr<simulator::ControlPort> OpenControlPort(simulator::Controller& controller,
                                                        const Options& options) {
    if (!options.controlPort) {
        return nullptr;
    }
    const auto run = [&controller](std::string_view line) -> std::string {
        if (line == "quit") {
            stopAsked = true;
            return "ok";
        }
        return controller.With(
            [&](Device& device) { return simulator::RunControlLine(device, line); });
    };
    auto port = std::make_unique<simulator::ControlPort>(*options.controlPort, run);
    std::cout << "control port " << port->Number() << std::endl;
    return port;
}

/// Shows what the host commanded. Queries come many times a second and would bury it.
void ShowRequests(simulator::Controller& controller, bool quiet) {
    for (std::string request : controller.TakeRequestLog()) {
        request.erase(request.find_last_not_of("\r\n") + 1);
        // Garbage from the line must not steer the terminal.
        std::ranges::replace_if(
            request, [](char byte) { return byte < ' ' || byte > '~'; }, '.');
        if (!quiet && !request.ends_with('?')) {
            std::cout << request << std::endl;
        }
    }
}

void Serve(simulator::Controller& controller, const Options& options) {
    constexpr auto Round = std::chrono::milliseconds(40);
    const auto start = std::chrono::steady_clock::now();
    simulator::ConsoleInput input;
    simulator::Exerciser exerciser;
    while (!stopAsked && !(options.exitOnEof && input.Ended())) {
        const auto line = input.Next(Round);
        if (line && *line == "quit") {
            return;
        }
        if (line) {
            std::cout << controller.With([&](Device& device) {
                return simulator::RunConsoleLine(device, *line);
            }) << std::endl;
        }
        if (options.exercise) {
            const simulator::Time now = std::chrono::steady_clock::now() - start;
            controller.With([&](Device& device) {
                if (device.PowerOn()) {
                    exerciser.Step(device.Model(), now);
                }
            });
        }
        ShowRequests(controller, options.quiet);
    }
}

int Run(int argc, char** argv) {
    Options options;
    CLI::App app(simulator::HelpBeforeOptions());
    AddOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? StatusGood : StatusBadCommandLine;
    }
    std::optional<simulator::Trace> trace;
    if (options.replay.Chosen() && !(trace = options.replay.Read())) {
        return simulator::ReplayOptions::StatusNoRecord;
    }
    const auto line = options.line.Open(options.bitsPerSecond);
    simulator::DeviceSettings settings;
    settings.bitsPerSecond = options.bitsPerSecond;
    settings.latency = Milliseconds(options.latency);
    settings.portGoesWithCable = line->PortGoesWithCable();
    std::signal(SIGINT, AskToStop);
    std::signal(SIGTERM, AskToStop);
    if (trace) {
        return simulator::RunReplay(*line, options.line.Name(), settings, std::move(*trace),
                                    options.replay.Settings(), [&](const auto& input) {
                                        return stopAsked != 0 ||
                                               (options.exitOnEof && input.Ended());
                                    });
    }
    simulator::Controller controller(*line, settings);
    controller.With([&](Device& device) { SetUp(device, options); });
    const auto control = OpenControlPort(controller, options);
    controller.Start();
    std::cout << "ready on " << options.line.Name() << std::endl;
    Serve(controller, options);
    return StatusGood;
}

}  // namespace

int main(int argc, char** argv) {
    int status = StatusNoLine;
    try {
        status = Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ovisk-sim: " << error.what() << std::endl;
    }
    // The thread that reads standard input may still be waiting there.
    std::cout.flush();
    std::_Exit(status);
}
