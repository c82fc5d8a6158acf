#include "snapshot_bench.h"

// A recursive pthread mutex, called in place.
[[maybe_unused]] const bool registered = SnapshotFloors<std::recursive_mutex>::Register();
