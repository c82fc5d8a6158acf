#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <vector>

#include "log_viewer/lines.h"
#include "log_viewer/time_of_day.h"

namespace log_viewer {

/// Appends all text to a file, as it comes: lines end in a line-feed, an unfinished line is written
/// as far as it goes. Each text is with the system when the call returns.
class FileSaver {
  public:
    /// Opens or makes the file; a line that it breaks off in goes on. Throws std::runtime_error.
    FileSaver(std::filesystem::path file, bool stamps);

    /// Once a write has failed, nothing more is written. One thread only.
    void Write(const std::vector<Fragment>& fragments, const TimeOfDay& arrival);

    const std::filesystem::path& File() const { return file_; }
    /// Whether a write has failed. Any thread.
    bool Failed() const { return failed_; }

  private:
    const std::filesystem::path file_;
    const bool stamps_;
    std::ofstream stream_;
    bool atLineStart_;
    std::atomic<bool> failed_{false};
};

}  // namespace log_viewer
