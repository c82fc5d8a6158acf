#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>

#include "peers/roles.h"

namespace {

struct Options {
    bool serialLog = false;
    std::size_t rounds = 50;
};

void AddRoles(CLI::App& app, Options& options, std::function<int()>& role) {
    CLI::App* log = app.add_subcommand("log", "hosts the module and logs; see roles.h");
    log->add_flag("--serial-log", options.serialLog, "logs every exchange too");
    log->callback([&] { role = [&] { return peers::HostTheLog(options.serialLog); }; });
    CLI::App* scribble =
        app.add_subcommand("scribble", "writes random bytes over the log's block until killed");
    scribble->callback([&] { role = peers::ScribbleOverTheBlock; });
    CLI::App* view = app.add_subcommand("view", "a viewer that keeps the log's mutex for long");
    view->callback([&] { role = peers::ViewSlowly; });
    CLI::App* loads = app.add_subcommand("loads", "loads and unloads the module");
    loads->add_option("--rounds", options.rounds, "how many times")->capture_default_str();
    loads->callback([&] { role = [&] { return peers::LoadAndUnload(options.rounds); }; });
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    std::function<int()> role;
    CLI::App app("One process of those that fuzz/peers/run sets upon the module.");
    app.require_subcommand(1);
    AddRoles(app, options, role);
    CLI11_PARSE(app, argc, argv);
    return role();
} catch (const std::exception& failure) {
    std::fprintf(stderr, "peers: %s\n", failure.what());
    return EXIT_FAILURE;
}
