#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/trace.h"

namespace simulator {

/// Commands of a record that one thread of the module sends in turn, as indexes into the record.
struct CommandLane {
    std::vector<std::size_t> entries;
    std::size_t next = 0;

    bool Done() const { return next == entries.size(); }
};

/// The recorded replies to one query. Commands divide them into spans: a reply is never taken from
/// behind a command that has not come yet while there is another. A condition is asked for only
/// while something is watched that a command has begun, and only such commands divide it.
class PollLane {
  public:
    /// What to answer with.
    struct Choice {
        std::optional<std::size_t> entry;  ///< nothing: the record has no reply
        bool isRecorded = false;           ///< it is its turn; otherwise it fills a gap
    };

    /// `begunBy`: how the commands begin that make a condition asked for; empty for what is polled
    /// all the time.
    explicit PollLane(std::string_view request, std::string_view begunBy = {})
        : request_(request), begunBy_(begunBy) {}

    std::string_view Request() const { return request_; }
    bool IsCondition() const { return !begunBy_.empty(); }

    /// Takes the next recorded reply, and the next recorded command of any kind.
    void Add(std::size_t index) { entries_.push_back(index); }
    void AddCommand(std::size_t index, std::string_view command);

    /// The reply for now. `reached` is the place behind the last command seen.
    Choice Choose(std::size_t reached);
    /// How many replies in a row have filled a gap.
    std::size_t Gaps() const { return gaps_; }
    /// The command that ends the span, if there is one.
    std::optional<std::size_t> Limit() const;
    /// The command that began the span, if there was one.
    std::optional<std::size_t> Beginning() const;
    void PassLimit();

    /// The first entry of the span that was not asked for although it tells something new.
    std::optional<std::size_t> Unasked(const Trace& trace) const;
    /// Whether the recorded module asked no more after the last entry of the span, since that one
    /// told something new.
    bool EndsInChange(const Trace& trace) const;
    bool Exhausted() const { return next_ == entries_.size(); }
    bool HasEntriesFrom(std::size_t index) const {
        return !entries_.empty() && entries_.back() >= index;
    }

  private:
    std::size_t SpanBegin() const;
    std::size_t SpanEnd() const;

    std::string_view request_;
    std::string_view begunBy_;
    std::vector<std::size_t> entries_;
    std::vector<std::size_t> limits_;
    std::size_t next_ = 0;
    std::size_t nextLimit_ = 0;
    std::optional<std::size_t> told_;
    std::size_t gaps_ = 0;
};

}  // namespace simulator
