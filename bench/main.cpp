#include <benchmark/benchmark.h>

#include <thread>

#include "host/process_attach.h"

/// Rows are named `row/floor` and `row/module`; `table` sets them beside each other.
int main(int argc, char** argv) {
    AttachProcess(nullptr);
    // A process that has never had a second thread gets cheaper locks than any host has.
    std::thread([] {}).join();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
