#pragma once

#include <array>
#include <cstddef>

#include "replies/query.h"

/// The controller's homing condition: of its fields up to five are read, and the fourth and the
/// fifth tell how the origin returns of X and Y stand. Only a field's first character counts.
struct HomingCondition {
    static constexpr std::size_t Fields = 5;

    /// Asks for it. False, with the exchange's log line, when no good reply came.
    bool Query();

    /// Whether the first `count` fields are there.
    bool Has(std::size_t count) const { return fields[count - 1] != nullptr; }

    /// Field 1 to 5; null when the reply has fewer.
    const char* Field(std::size_t number) const { return fields[number - 1]; }

    ExchangeReplyBuffer buffer{};
    std::array<const char*, Fields> fields{};
};

inline constexpr std::size_t XStatusField = 4;
inline constexpr std::size_t YStatusField = 5;

/// What a status field begins with when its axis has finished.
inline constexpr char HomingFinished = '2';
