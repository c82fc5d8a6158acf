#pragma once

#include <array>
#include <cstdint>

namespace failing {

/// What a life leaves in the system when the module is out of the process again.
struct Remains {
    std::uint32_t descriptors;
    std::uint32_t mappings;
};

/// A place of the module from which calls are made that can fail.
struct Place {
    std::uint64_t way;   ///< a digest of the return addresses up to there
    std::uint32_t call;  ///< the first call from it
};

/// What one life came to; plain, since it crosses from the life's process to the campaign's.
struct Report {
    std::uint32_t calls;  ///< that could fail, in the operation
    std::uint32_t placeCount;
    std::array<Place, 2000> places;
    Remains remains;
    bool over;
    char failed[40];  ///< the function of the call that failed; empty if it did not come
    char root[64];    ///< the machine's folder
    char violation[400];
};

}  // namespace failing
