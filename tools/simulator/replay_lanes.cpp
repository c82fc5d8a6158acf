#include "simulator/replay_lanes.h"

#include <algorithm>
#include <limits>

namespace simulator {

void PollLane::AddCommand(std::size_t index, std::string_view command) {
    if (command.starts_with(begunBy_)) {
        limits_.push_back(index);
    }
}

std::optional<std::size_t> PollLane::Limit() const {
    return nextLimit_ < limits_.size() ? std::optional(limits_[nextLimit_]) : std::nullopt;
}

std::optional<std::size_t> PollLane::Beginning() const {
    return nextLimit_ > 0 ? std::optional(limits_[nextLimit_ - 1]) : std::nullopt;
}

std::size_t PollLane::SpanBegin() const {
    return Beginning().value_or(0);
}

std::size_t PollLane::SpanEnd() const {
    return Limit().value_or(std::numeric_limits<std::size_t>::max());
}

void PollLane::PassLimit() {
    ++nextLimit_;
    told_.reset();
    gaps_ = 0;
}

PollLane::Choice PollLane::Choose(std::size_t reached) {
    if (IsCondition() && !Beginning()) {
        return {};
    }
    // The present state of what is polled all the time stands behind the last command. What is
    // watched is told from its beginning.
    const std::size_t from = IsCondition() ? SpanBegin() : std::min(reached, SpanEnd());
    while (!Exhausted() && entries_[next_] < from) {
        ++next_;
    }
    if (!Exhausted() && entries_[next_] < SpanEnd()) {
        gaps_ = 0;
        told_ = entries_[next_++];
        return {told_, true};
    }
    ++gaps_;
    if (next_ > 0 && (!IsCondition() || entries_[next_ - 1] > SpanBegin())) {
        return {entries_[next_ - 1], false};
    }
    return {Exhausted() ? std::nullopt : std::optional(entries_[next_]), false};
}

std::optional<std::size_t> PollLane::Unasked(const Trace& trace) const {
    const auto end = std::ranges::lower_bound(entries_, SpanEnd());
    const auto begin = std::max(entries_.begin() + static_cast<std::ptrdiff_t>(next_),
                                std::ranges::upper_bound(entries_, SpanBegin()));
    if (!told_) {
        // A single one may just not have had its time.
        return end - begin >= 2 ? std::optional(*begin) : std::nullopt;
    }
    const std::string told = trace.exchanges[*told_].Reply();
    const auto news = std::find_if(
        begin, end, [&](std::size_t index) { return trace.exchanges[index].Reply() != told; });
    return news != end ? std::optional(*news) : std::nullopt;
}

bool PollLane::EndsInChange(const Trace& trace) const {
    const auto end = std::ranges::lower_bound(entries_, SpanEnd());
    const auto begin = std::ranges::upper_bound(entries_, SpanBegin());
    return end - begin >= 2 &&
           trace.exchanges[*(end - 1)].Reply() != trace.exchanges[*(end - 2)].Reply();
}

}  // namespace simulator
