#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/axis.h"

namespace simulator {

/// A saved log as the text that went through the channel: time stamps taken off, escapes undone,
/// each line ended by a line-feed. The file may have been written with or without stamps, with
/// control characters escaped or raw; it may have got other line ends on its way, or have lost its
/// carriage returns: then every text in front of an empty line gets one back. Takes any bytes.
class TraceText {
  public:
    explicit TraceText(std::string_view file);

    const std::string& Text() const { return text_; }
    /// The file's line, counted from 1, of a place in the text.
    std::size_t LineOf(std::size_t place) const;
    /// The stamp of that line, else of the last one before it that has one; growing over midnight.
    /// Nothing in front of the first stamp.
    std::optional<Time> TimeOf(std::size_t place) const;

  private:
    struct Line {
        std::size_t begin;
        std::optional<Time> time;
    };

    std::string text_;
    std::vector<Line> lines_;
};

}  // namespace simulator
