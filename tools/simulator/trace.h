#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/axis.h"

namespace simulator {

/// One request of the module and what came back.
struct Exchange {
    struct Piece {
        Time at{0};  ///< when the log told of it, by the clock of the trace
        std::string bytes;
    };

    std::size_t line = 0;  ///< the file's line with the request
    Time at{0};
    std::string request;        ///< with its line end
    std::vector<Piece> pieces;  ///< the reply in the pieces in which it was read; none: silence
    bool complete = false;      ///< false: the log does not tell what became of the request

    /// The whole reply.
    std::string Reply() const;
};

/// The exchanges that the module logged.
struct Trace {
    /// Something that could not be used as it stood.
    struct Remark {
        std::size_t line;
        std::string text;
    };

    std::vector<Exchange> exchanges;
    bool hasTimes = false;         ///< otherwise all times are 0
    std::size_t foreignLines = 0;  ///< lines that the module did not write
    std::vector<Remark> remarks;   ///< in the order of the file
};

/// Reads a saved log that was made with `SerialLog` 1, whatever else it holds. Two threads' lines
/// that got mixed are taken apart where the log says the same thing twice.
Trace ReadTrace(std::string_view file);

}  // namespace simulator
