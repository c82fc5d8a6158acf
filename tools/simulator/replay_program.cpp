#include "simulator/replay_program.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <sstream>
#include <utility>

namespace simulator {

namespace {

void ShowMessages(Controller& controller, Replay& replay) {
    const auto messages = controller.With([&](Device&) { return replay.TakeMessages(); });
    for (const std::string& message : messages) {
        std::cout << message << std::endl;
    }
}

int StatusOf(const Replay& replay) {
    if (replay.Counts().Departures() > 0) {
        return ReplayOptions::StatusDeparted;
    }
    return replay.AtEnd() ? ReplayOptions::StatusFollowed : ReplayOptions::StatusStoppedEarly;
}

}  // namespace

void ReplayOptions::AddTo(CLI::App& app) {
    CLI::Option* replay =
        app.add_option("--replay", file_,
                       "Simulate no stage, but answer as the controller whose\n"
                       "exchanges this saved log holds, and say where the module\n"
                       "departs from it")
            ->type_name("FILE");
    app.add_flag("--no-timing", noTiming_,
                 "Replayed replies come at once, even if the log has times")
        ->needs(replay);
    app.add_flag("--loop", settings_.loop, "The record begins anew whenever the host starts anew")
        ->needs(replay);
    app.add_option("--window", settings_.window,
                   "Among so many recorded commands ahead one is looked for that\n"
                   "is not the next")
        ->needs(replay)
        ->check(CLI::Range(1, 1'000'000).description(""))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--patience", settings_.patience,
                   "After so many polls more than recorded, the next recorded\n"
                   "command counts as missing; 0: it is waited for")
        ->needs(replay)
        ->type_name("N")
        ->capture_default_str();
}

ReplaySettings ReplayOptions::Settings() const {
    ReplaySettings settings = settings_;
    settings.timing = !noTiming_;
    return settings;
}

std::optional<Trace> ReplayOptions::Read() const {
    std::ifstream file(file_, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        std::cerr << "ovisk-sim: cannot read " << file_ << std::endl;
        return std::nullopt;
    }
    Trace trace = ReadTrace(content.str());
    std::cout << file_ << ": " << Describe(trace) << std::endl;
    if (trace.exchanges.empty()) {
        std::cerr << "ovisk-sim: no exchange in " << file_ << "; was it recorded with SerialLog 1?"
                  << std::endl;
        return std::nullopt;
    }
    return trace;
}

int RunReplay(Transport& line, const std::string& lineName, DeviceSettings device, Trace trace,
              const ReplaySettings& settings, const std::function<bool(ConsoleInput&)>& isOver) {
    if (settings.timing && trace.hasTimes) {
        device.bitsPerSecond = 0;  // The time on the line is part of the recorded times.
    }
    Replay replay(std::move(trace), settings);
    Controller controller(line, device);
    controller.SetScript([&](const std::string& request) { return replay.Answer(request); });
    controller.Start();
    std::cout << "ready on " << lineName << std::endl;
    ConsoleInput input;
    while (!isOver(input) && input.Next(std::chrono::milliseconds(40)) != "quit") {
        ShowMessages(controller, replay);
    }
    controller.Stop();
    replay.Finish();
    ShowMessages(controller, replay);
    std::cout << replay.Summary() << std::endl;
    return StatusOf(replay);
}

}  // namespace simulator
