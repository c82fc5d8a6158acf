#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "host/interrupt.h"
#include "host/library.h"
#include "host/module_library.h"
#include "host/monitor.h"

namespace {

enum ExitStatus { Done = 0, NoLiveData = 1, NoModule = 3 };

std::filesystem::path BesideProgram(const char* program) {
    return std::filesystem::absolute(program).parent_path() / host_tool::ModuleFileName;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Example host of the ZbOvisk stage module"};
    app.require_subcommand(1);
    app.footer(
        "Exit status: 0 done; 1 no live data came; 3 the module could not be loaded; other: "
        "unusable arguments.");
    std::filesystem::path library = BesideProgram(argv[0]);
    app.add_option("--library", library, "The module's file")->capture_default_str();

    host_tool::MonitorOptions options;
    unsigned period = 200;
    unsigned seconds = 0;
    CLI::App* monitor =
        app.add_subcommand("monitor", "Shows position, switches, lamps and latches until Ctrl-C");
    monitor->add_option("--seconds", seconds, "End after so many seconds; 0: at Ctrl-C")
        ->capture_default_str();
    monitor->add_option("--period", period, "Milliseconds between two readouts")
        ->capture_default_str();
    monitor->add_flag("--every", options.everyLine, "Print each readout, not only changes");
    CLI11_PARSE(app, argc, argv);

    options.period = std::chrono::milliseconds(period);
    options.length = std::chrono::seconds(seconds);
    host_tool::CatchInterrupts();
    try {
        host_tool::ModuleLibrary module(library);
        const host_tool::RunningModule running(module, 0);
        return host_tool::Monitor(module, options) ? Done : NoLiveData;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ovisk-host: %s\n", error.what());
        return NoModule;
    }
}
