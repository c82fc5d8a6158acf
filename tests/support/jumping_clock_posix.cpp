#include <cstdlib>

#include "native/virtual_time.h"
#include "support/clock.h"

namespace {

// With a seed in the environment, threads are held up at their calls as on a busy machine.
const char* const seed = std::getenv("ZB_TEST_SEED");  // NOLINT(concurrency-mt-unsafe): before main

// Before main, while there is one thread.
const bool jumps = [] {
    virtual_time::Settings settings;
    if (seed != nullptr) {
        settings.seed = std::strtoull(seed, nullptr, 10);
        settings.pauseEvery = 40;
        settings.longestPause = std::chrono::milliseconds(400);
    }
    virtual_time::Start(settings);
    return true;
}();

}  // namespace

bool test_support::ClockJumps() {
    return jumps;
}

bool test_support::TimesAreExact() {
    return jumps && seed == nullptr;
}
