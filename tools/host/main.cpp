#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <functional>

#include "host/actions.h"
#include "host/go_to.h"
#include "host/homing.h"
#include "host/interrupt.h"
#include "host/module_library.h"
#include "host/monitor.h"
#include "host/panel.h"

namespace {

using host_tool::ModuleLibrary;

/// What the chosen subcommand does with the running module; gives the exit status.
using Action = std::function<int(ModuleLibrary&)>;

const char* const Statuses =
    "Exit status: 0 done; 1 the stage was not live at the end of the monitor, or a lamp's value "
    "did not come back; 3 the module could not be loaded; 4 the module or the controller refused "
    "the call, there is no panel, or a step of it has no such control; 5 the move ended with an "
    "error or not at its target; 6 nobody knows how the move ended: no answer, replaced, lost, or "
    "not within its time; above 100: unusable arguments.";

/// Options of all subcommands, with their defaults.
struct Options {
    std::filesystem::path library = host_tool::ModuleFileName;
    unsigned period = 200;
    unsigned seconds = 0;
    host_tool::MonitorOptions monitor;
    host_tool::MoveTarget target;
    unsigned limit = 60;
    int lamp = 0;
    int value = 0;
    bool automatic = false;
    bool answer = false;
    host_tool::PanelSession panel;
};

void AddMonitor(CLI::App& app, Options& options, Action& action) {
    CLI::App* monitor = app.add_subcommand(
        "monitor",
        "Shows position, switches, lamps, latches and the line until Ctrl-C, then whether the "
        "stage is live: the controller answers and the position is no older than 2 s. A line "
        "that failed meanwhile is told, and is no failure of the monitor");
    monitor->add_option("--seconds", options.seconds, "End after so many seconds; 0: at Ctrl-C")
        ->capture_default_str();
    monitor->add_option("--period", options.period, "Milliseconds between two readouts")
        ->capture_default_str();
    monitor->add_flag("--every", options.monitor.everyLine, "Print each readout, not only changes");
    monitor->add_flag("--json", options.monitor.json,
                      "Print each readout as one line of JSON, and nothing else");
    monitor->callback([&] {
        options.monitor.period = std::chrono::milliseconds(options.period);
        options.monitor.length = std::chrono::seconds(options.seconds);
        action = [&](ModuleLibrary& module) {
            return host_tool::Monitor(module, options.monitor) ? host_tool::Done
                                                               : host_tool::NotLive;
        };
    });
}

void AddGoTo(CLI::App& app, Options& options, Action& action) {
    CLI::App* goTo = app.add_subcommand(
        "goto",
        "Moves the stage and says what became of the move; a unit is 1000000 controller counts");
    goTo->add_option("X", options.target.x, "Target of X")->required();
    goTo->add_option("Y", options.target.y, "Target of Y")->required();
    goTo->add_option("Z", options.target.z, "Target of Z")->required();
    goTo->add_option("--limit", options.limit, "Seconds to wait for the end of the move")
        ->capture_default_str();
    goTo->callback([&] {
        options.target.limit = std::chrono::seconds(options.limit);
        action = [&](ModuleLibrary& module) { return host_tool::GoTo(module, options.target); };
    });
}

void AddLight(CLI::App& app, Options& options, Action& action) {
    CLI::App* light =
        app.add_subcommand("light", "Sets a lamp and waits until the stage data shows it");
    light->add_option("N", options.lamp, "Lamp, 0 to 10")->required();
    light->add_option("VALUE", options.value, "Brightness, 0 to 255")->required();
    light->callback([&] {
        action = [&](ModuleLibrary& module) {
            return host_tool::SetLight(module, options.lamp, options.value);
        };
    });
}

void AddHome(CLI::App& app, Options& options, Action& action) {
    CLI::App* home = app.add_subcommand(
        "home", "Homes the stage in the guided dialog; natively it is operated by keyboard");
    home->add_flag("--automatic", options.automatic, "The controller drives; else by hand");
    home->add_flag("--answer", options.answer, "Press OK whenever the dialog allows it");
    home->callback([&] {
        action = [&](ModuleLibrary& module) {
            return host_tool::Home(
                module, options.automatic,
                options.answer ? host_tool::Operator::Program : host_tool::Operator::Person);
        };
    });
}

void AddPanel(CLI::App& app, Options& options, Action& action) {
    CLI::App* panel = app.add_subcommand(
        "panel",
        "Serves the module's diagnostic panel until it is closed; the settings have to say "
        "Dialog=1. Natively it is operated by keyboard");
    panel->add_option("--do", options.panel.steps,
                      "Steps to take, then end: a button's caption, or ID=TEXT for a box");
    panel->add_option("--seconds", options.seconds, "End after so many seconds");
    panel->callback([&] {
        options.panel.length = std::chrono::seconds(options.seconds);
        action = [&](ModuleLibrary&) { return host_tool::ServePanel(options.panel); };
    });
}

int Run(int argc, char** argv) {
    CLI::App app{"Example host of the ZbOvisk stage module"};
    app.require_subcommand(1);
    app.footer(Statuses);
    Options options;
    app.add_option("--library", options.library, "The module's file")->capture_default_str();
    Action action;
    AddMonitor(app, options, action);
    AddGoTo(app, options, action);
    AddLight(app, options, action);
    AddHome(app, options, action);
    AddPanel(app, options, action);
    app.add_subcommand("latches", "Prints the latches and clears them")->callback([&] {
        action = host_tool::ShowLatches;
    });
    CLI11_PARSE(app, argc, argv);

    host_tool::CatchInterrupts();
    ModuleLibrary module(options.library);
    const host_tool::RunningModule running(module, options.automatic ? 1 : 0);
    return action(module);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ovisk-host: %s\n", error.what());
        return host_tool::NoModule;
    }
}
