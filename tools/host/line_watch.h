#pragma once

#include <chrono>
#include <string>

#include "host/zb_ovisk_plain.h"

namespace host_tool {

/// What a monitor has seen of the line: whether it answers, and for how long it did not. One
/// thread.
class LineWatch {
  public:
    using Time = std::chrono::steady_clock::time_point;

    explicit LineWatch(Time start) : lastGood_(start) {}

    /// Takes a reading in. What is to be told when the line has begun to answer or to fail since
    /// the one before, has failed in between, or the worker has ended; else an empty text.
    std::string Note(const ZbOviskHealth& health, Time now);

    /// Whether the controller answers by the newest reading, and the position is new enough for a
    /// stage that is polled.
    bool IsLive() const;
    /// Whether the stage is live and why not, and how the line was meanwhile. Two lines.
    std::string Verdict() const;

  private:
    enum class State { Waits, Answers, Fails, Over };

    static State StateIn(const ZbOviskHealth& health);
    std::string NewsOf(State before) const;

    ZbOviskHealth newest_{};
    State state_ = State::Waits;
    Time lastGood_;  ///< when an exchange was good last, or the watch began
    int failures_ = 0;
    std::chrono::duration<double> failing_{0};  ///< in all, without the failure under way
    std::chrono::duration<double> failsFor_{0};
};

}  // namespace host_tool
