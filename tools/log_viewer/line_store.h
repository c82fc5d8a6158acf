#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "log_viewer/lines.h"
#include "log_viewer/time_of_day.h"

namespace log_viewer {

/// The newest lines, as many as its limit; the oldest go. A line that grows past 8192 bytes goes on
/// as another one, so that memory is bounded whatever comes. Any thread may call.
class LineStore {
  public:
    explicit LineStore(std::size_t limit);

    /// How far a reader has come: so many bytes of the line with this number, counted from 0 over
    /// all lines that ever came.
    struct Place {
        std::uint64_t line = 0;
        std::size_t offset = 0;
    };

    struct Form {
        bool stamps;
        std::string_view lineEnd;
    };

    struct Reading {
        std::string text;
        std::uint64_t skipped;  ///< Lines that had gone before the reader came to them.
    };

    void Append(const std::vector<Fragment>& fragments, const TimeOfDay& arrival);

    /// All text behind the place, which moves to its end. An unfinished line is read as far as it
    /// goes; its stamp is the arrival of its beginning.
    Reading ReadOn(Place& place, const Form& form) const;

    /// Forgets all lines and gives the place behind them.
    Place Clear();

    /// Lines that ever came, and lines held.
    std::uint64_t Received() const;
    std::size_t Held() const;

  private:
    struct Line {
        TimeOfDay arrival;
        std::string text;
        bool ended;
    };

    void AppendFragment(const Fragment& fragment, const TimeOfDay& arrival);

    const std::size_t limit_;
    mutable std::mutex mutex_;
    std::deque<Line> lines_;
    std::uint64_t first_ = 0;  // The number of the oldest line held.
};

}  // namespace log_viewer
