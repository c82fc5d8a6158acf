#include "host/line_watch.h"

#include <cstdio>

#include "host/text.h"

namespace host_tool {

namespace {

/// A stage is polled several times a second, but for long pauses in the settings.
constexpr std::uint64_t OldestLiveMilliseconds = 2000;

std::string NoAnswer(const ZbOviskHealth& health) {
    const std::string reason = std::string(": ") + health.lastFailure;
    return health.link == ZBOVISK_LINK_NEVER_ANSWERED
               ? "the controller has never answered" + reason
               : "no answer for " + SecondsText(health.millisecondsSinceGood) + reason;
}

std::string PositionAge(const ZbOviskHealth& health) {
    return health.positionAge == ZBOVISK_NEVER
               ? "no position has come"
               : "the position is " + SecondsText(health.positionAge) + " old";
}

}  // namespace

LineWatch::State LineWatch::StateIn(const ZbOviskHealth& health) {
    if (health.worker == ZBOVISK_WORKER_STOPPED || health.worker == ZBOVISK_WORKER_ENDED) {
        return State::Over;
    }
    if (health.failuresInRow > 0) {
        return State::Fails;
    }
    return health.link == ZBOVISK_LINK_ANSWERS ? State::Answers : State::Waits;
}

std::string LineWatch::Note(const ZbOviskHealth& health, Time now) {
    const State before = state_;
    const bool failed = health.exchangesFailed != newest_.exchangesFailed;
    const Time good = health.millisecondsSinceGood == ZBOVISK_NEVER
                          ? lastGood_
                          : now - std::chrono::milliseconds(health.millisecondsSinceGood);
    failures_ += failed && before != State::Fails ? 1 : 0;
    if (failed || before == State::Fails) {
        failing_ += good - lastGood_;
    }
    lastGood_ = good;
    newest_ = health;
    state_ = StateIn(health);
    failsFor_ = state_ == State::Fails ? now - lastGood_ : std::chrono::duration<double>(0);
    if (state_ != before) {
        return NewsOf(before);
    }
    return failed && state_ == State::Answers
               ? std::string("failed between two readouts: ") + health.lastFailure +
                     "; the controller answers again"
               : "";
}

std::string LineWatch::NewsOf(State before) const {
    switch (state_) {
        case State::Answers:
            return before == State::Fails ? "the controller answers again"
                                          : "the controller answers";
        case State::Fails:
            return NoAnswer(newest_);
        case State::Over:
            return "the module's worker is over";
        default:
            return "";
    }
}

bool LineWatch::IsLive() const {
    return state_ == State::Answers && newest_.positionAge <= OldestLiveMilliseconds;
}

std::string LineWatch::Verdict() const {
    const std::string link = state_ == State::Answers ? "the controller answers"
                             : state_ == State::Fails ? NoAnswer(newest_)
                             : state_ == State::Over  ? "the module's worker is over"
                                                      : "nothing was asked yet";
    const std::uint64_t exchanges = newest_.exchangesGood + newest_.exchangesFailed;
    const double share = exchanges == 0 ? 0
                                        : 100.0 * static_cast<double>(newest_.exchangesFailed) /
                                              static_cast<double>(exchanges);
    char line[160];
    std::snprintf(line, sizeof line,
                  "\nthe line failed %d time%s for %.1f s in all; %llu of %llu exchanges failed "
                  "(%.1f %%)",
                  failures_, failures_ == 1 ? "" : "s", (failing_ + failsFor_).count(),
                  static_cast<unsigned long long>(newest_.exchangesFailed),
                  static_cast<unsigned long long>(exchanges), share);
    return std::string(IsLive() ? "the stage is live: " : "the stage is not live: ") + link + ", " +
           PositionAge(newest_) + line;
}

}  // namespace host_tool
