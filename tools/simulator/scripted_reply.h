#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/axis.h"

namespace simulator {

/// What goes out in the place of a standard reply: any bytes, in pieces. The delay of the first
/// piece counts from the moment at which the standard reply would start, that of the others from
/// the end of the piece before.
struct ScriptedReply {
    struct Piece {
        Time delay{0};
        std::string bytes;
    };

    /// These bytes, without delay; the empty text stays silent.
    ScriptedReply(std::string bytes) { pieces.push_back({Time::zero(), std::move(bytes)}); }
    ScriptedReply(const char* bytes) : ScriptedReply(std::string(bytes)) {}
    ScriptedReply(std::vector<Piece> timedPieces) : pieces(std::move(timedPieces)) {}

    std::vector<Piece> pieces;
};

/// Asked first for every request, which it gets as it stood on the wire, with its line end if it
/// had one. Nothing: the standard reply goes out. A reply of its own: the stage does not see the
/// request at all, and no fault touches the reply. A lambda may return std::optional<std::string>
/// as well.
using Script = std::function<std::optional<ScriptedReply>(const std::string& request)>;

}  // namespace simulator
