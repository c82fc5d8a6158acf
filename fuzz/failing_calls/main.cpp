#include <execinfo.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "failing_calls/campaign.h"

int main(int argc, char** argv) try {
    using failing::Mode;
    failing::Options options;
    CLI::App app(
        "Lets each call of the module that can fail go wrong, once and for good, and looks "
        "whether the module bears it and comes back.");
    app.add_option("--operation", options.operation, "only this one");
    app.add_option("--call", options.call, "only this call of it, counted from 1");
    app.add_option(
           "--mode", options.modes,
           "once; function: this call and all later ones of its function; all: this one and "
           "all later ones")
        ->transform(CLI::CheckedTransformer(std::map<std::string, Mode>{
            {"once", Mode::Once}, {"function", Mode::Function}, {"all", Mode::All}}))
        ->default_str("each of them");
    app.add_flag("--short", options.isShort, "only one call from each place of the module");
    app.add_flag("--verbose", options.verbose, "a line for each life");
    app.add_option("--jobs", options.jobs, "lives at a time")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    if (options.modes.empty()) {
        options.modes = {Mode::Once, Mode::Function, Mode::All};
    }
    // Its first call loads a library, which no life should do.
    void* here = nullptr;
    backtrace(&here, 1);
    const auto start = std::chrono::steady_clock::now();
    failing::Campaign campaign(options);
    const bool kept = campaign.Run();
    campaign.PrintSummary(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return kept ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "failing_calls: %s\n", failure.what());
    return EXIT_FAILURE;
}
