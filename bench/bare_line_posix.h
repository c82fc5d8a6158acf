#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// An exchange with nothing around it.
class BareLine {
  public:
    /// Throws std::runtime_error if there is no such line.
    explicit BareLine(const std::string& path);
    ~BareLine();
    BareLine(const BareLine&) = delete;
    BareLine& operator=(const BareLine&) = delete;

    /// Writes, pauses for 10 ms, reads until the line has been idle for 20 ms; false if nothing
    /// came. The reply stays in `Reply` until the next one.
    bool Exchange(std::string_view request);
    std::string_view Reply() const { return {reply_, count_}; }

  private:
    int file_;
    char reply_[255] = {};
    std::size_t count_ = 0;
};
