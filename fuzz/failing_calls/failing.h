#pragma once

#include <cstdint>
#include <vector>

#include "failing_calls/report.h"

namespace failing {

enum class Mode {
    Once,      ///< the chosen call alone
    Function,  ///< it and every later call of the same function
    All,       ///< it and every later call
};

/// Which call fails, counted from 1 on through the operation; 0: none.
struct Plan {
    std::uint32_t call = 0;
    Mode mode = Mode::Once;
};

/// One function that can fail.
struct Source {
    const char* name;
};

/// What came of the plan so far.
struct Outcome {
    std::uint32_t calls = 0;
    const Source* failed = nullptr;  ///< the function that the chosen call called
    bool memoryFailed = false;       ///< an allocation, on any thread
    bool workerMemoryFailed = false;
    bool lineFailed = false;      ///< one of the serial port's calls
    bool settingsFailed = false;  ///< a read of the settings file while the module was loaded
    bool threadFailed = false;    ///< the start of the worker
    std::vector<Place> places;    ///< filled while no call is chosen
};

/// From here on the module's calls count, and fail as planned. By the host's thread.
void Begin(const Plan& plan);
/// The failing ends.
void End();
const Outcome& Result();

/// For the functions themselves: whether this call fails. `caller` is the address to which the
/// function returns; calls from elsewhere than the module neither count nor fail.
bool Fails(const Source& source, const void* caller);
/// The same for an allocation, which the module may ask for through the standard library.
bool MemoryFails(const void* caller);

}  // namespace failing
