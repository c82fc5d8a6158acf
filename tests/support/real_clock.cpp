#include "support/clock.h"

bool test_support::ClockJumps() {
    return false;
}

bool test_support::TimesAreExact() {
    return false;
}
