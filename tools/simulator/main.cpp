#include <CLI/CLI.hpp>

#include <algorithm>
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
#include "simulator/controller.h"
#include "simulator/exerciser.h"
#include "simulator/line_option.h"
#include "simulator/replay_program.h"

namespace {

using simulator::AxisName;
using simulator::StageModel;

constexpr int StatusGood = 0;
constexpr int StatusNoLine = 1;
constexpr int StatusBadCommandLine = 2;

volatile std::sig_atomic_t stopAsked = 0;

extern "C" void AskToStop(int /*signal*/) {
    stopAsked = 1;
}

struct Options {
    simulator::LineOption line;
    simulator::ReplayOptions replay;
    unsigned bitsPerSecond = 38'400;
    double latency = 0;
    double motionDelay = 0;
    double speed = simulator::AxisSettings{}.speed;
    std::vector<std::int32_t> position{0, 0, 0};
    bool quiet = false;
    bool exercise = false;
    bool exitOnEof = false;
};

void AddOptions(CLI::App& app, Options& options) {
    options.line.AddTo(app);
    app.add_option("--baud", options.bitsPerSecond,
                   "Speed of the line in bits per second; 0: replies take no time")
        ->capture_default_str();
    app.add_option("--latency", options.latency, "Milliseconds from a request to its reply")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_option("--position", options.position, "Where the axes stand at first, in counts")
        ->delimiter(',')
        ->expected(3)
        ->type_name("X,Y,Z");
    app.add_option("--speed", options.speed, "Speed of the axes in counts per second")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--motion-delay", options.motionDelay,
                   "Milliseconds from an accepted move to the first sign of motion")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    app.add_flag("--quiet", options.quiet, "Do not show the moves, settings and actions received");
    app.add_flag("--exercise", options.exercise,
                 "Move the axes gently and change a switch and a lamp now and then; turn the knobs "
                 "in origin returns by hand; "
                 "pauses for commanded moves and origin returns");
    app.add_flag("--exit-on-eof", options.exitOnEof, "End when standard input ends");
    options.replay.AddTo(app);
    app.footer(
        "Lines on standard input:\n" + std::string(simulator::ConsoleHelp()) +
        "\n\nExit status: 0 after quit, an interrupt or --exit-on-eof; 1 if the line "
        "cannot be opened;\n2 for a wrong command line. A replay: 0 if the record was followed "
        "to its end, 3 after\ndepartures, 4 if it stopped before the end without one, 5 if "
        "the file holds no exchange.");
}

simulator::Time Milliseconds(double count) {
    return std::chrono::duration_cast<simulator::Time>(
        std::chrono::duration<double, std::milli>(count));
}

void SetUp(StageModel& model, const Options& options) {
    for (const AxisName name : {AxisName::X, AxisName::Y, AxisName::Z}) {
        const auto index = static_cast<std::size_t>(name);
        model.At(name).Place(options.position[index]);
        model.At(name).Settings().speed = options.speed;
        // A quarter of a second to full speed, whatever that is.
        model.At(name).Settings().acceleration = 4 * options.speed;
    }
    model.SetMotionDelay(Milliseconds(options.motionDelay));
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
    while (stopAsked == 0 && !(options.exitOnEof && input.Ended())) {
        const auto line = input.Next(Round);
        if (line && *line == "quit") {
            return;
        }
        if (line) {
            std::cout << controller.With([&](StageModel& model) {
                return simulator::RunConsoleLine(model, *line);
            }) << std::endl;
        }
        if (options.exercise) {
            const simulator::Time now = std::chrono::steady_clock::now() - start;
            controller.With([&](StageModel& model) { exerciser.Step(model, now); });
        }
        ShowRequests(controller, options.quiet);
    }
}

int Run(int argc, char** argv) {
    Options options;
    CLI::App app("Simulated X/Y/Z stage controller on a serial line");
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
    controller.With([&](StageModel& model) { SetUp(model, options); });
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
