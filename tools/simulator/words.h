#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "simulator/stage_model.h"

namespace simulator {

/// The words of one command line, taken in turn. A word that is not there, or not right for what
/// is asked, is no value.
class Words {
  public:
    explicit Words(std::string_view line) : stream_(std::string(line)) {}

    template <class Value>
    std::optional<Value> Take() {
        Value value{};
        return stream_ >> value ? std::optional(value) : std::nullopt;
    }
    /// X, Y or Z.
    std::optional<AxisName> TakeAxis();
    /// A name or a number; 0 if it is neither.
    int TakeSwitch();
    /// True if all words have been taken.
    bool AtEnd() { return (stream_ >> std::ws).eof(); }

  private:
    std::istringstream stream_;
};

}  // namespace simulator
