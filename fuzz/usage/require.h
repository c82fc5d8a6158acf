#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the process at once, without any clean-up, when something that has to hold does not.
inline void Require(bool kept, const std::string& what) {
    if (!kept) {
        std::fflush(stdout);
        std::fprintf(stderr, "FAILED: %s\n", what.c_str());
        std::_Exit(EXIT_FAILURE);
    }
}
