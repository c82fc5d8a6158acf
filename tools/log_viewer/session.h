#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>

#include "log_viewer/collector.h"

namespace log_viewer {

struct Options {
    std::filesystem::path saveFile;  ///< Empty: none.
    bool stamps = false;
    std::size_t lines = 10'000;
    unsigned seconds = 0;  ///< 0: no end.
    bool once = false;
    bool quiet = false;
    bool noWindow = false;
};

/// What a view shows, and until when.
struct Session {
    const Options& options;
    LineStore& store;
    Collector& collector;
    const FileSaver* saver;  ///< Null: none.
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    /// Whether the program is to end: its time is up, or it was interrupted.
    bool IsOver() const;
};

}  // namespace log_viewer
