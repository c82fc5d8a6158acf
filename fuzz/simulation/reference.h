#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "stage/ovisk_data.h"

namespace simulation {

/// One request and what its sender has read since.
struct Exchange {
    struct Chunk {
        std::chrono::nanoseconds last;
        std::string bytes;
    };

    std::string request;
    std::vector<Chunk> chunks;
    std::uint64_t number = 0;  ///< 0: there was none yet
    std::chrono::nanoseconds began{0};
    bool isLate = false;  ///< something waited on the line before, so that no reply is good

    void Add(std::string_view bytes, std::chrono::nanoseconds now);
    /// The reply as the module collects it: of each read what stands before a zero.
    std::string Text() const;
    bool Asks(std::string_view name) const { return request.starts_with(name); }
};

// How the replies are to be read, written anew and apart from the module; nothing for a reply that
// must be dropped.

/// Whether a reply has to be one line alone. Set before anything is read.
extern bool readsStrictly;

bool HasForm(const std::string& text, std::string_view prefix);
std::optional<McndReply> ReadMotion(const std::string& text);
bool MotionIsBad(const McndReply& reply);
bool MotionGoesOn(const McndReply& reply);
/// The controller's words in a reply that refuses.
std::optional<std::string> RefusalIn(const std::string& text);
/// The first byte of a field of the homing condition; 0 if it is not there.
char HomingStatus(const std::string& text, std::size_t field);

using Record = std::variant<CposmrReply, SswcReply, LabrReply>;
/// What a poll adds to the stage data; `request` says which.
std::optional<Record> ReadPoll(const std::string& request, const std::string& text);
void Merge(const Record& record, OviskData& data);
/// All values, with the position divided by `scale`; 0 for the number of an axis in error.
std::string Shown(const OviskData& data, double scale = 1);

}  // namespace simulation
