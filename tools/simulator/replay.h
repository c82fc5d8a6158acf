#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/device.h"
#include "simulator/replay_lanes.h"
#include "simulator/trace.h"

namespace simulator {

struct ReplaySettings {
    /// Replies take as long as they took; otherwise they come at once.
    bool timing = true;
    /// The record begins anew when the host does.
    bool loop = false;
    /// Among so many commands ahead one is looked for that is not the next.
    std::size_t window = 16;
    /// After so many polls more than recorded, the command that the record has next counts as
    /// missing and the polls go on behind it. 0: it is waited for without limit.
    std::size_t patience = 0;
};

/// What a replay has seen so far.
struct ReplayCounts {
    std::size_t followed = 0;  ///< exchanges of the record that came in their turn
    std::size_t repeated = 0;  ///< polls beyond the recorded ones, given a known reply again
    std::size_t folded = 0;    ///< recorded commands whose place a newer one of their name took
    std::size_t missing = 0;
    std::size_t additional = 0;
    std::size_t changed = 0;

    std::size_t Departures() const { return missing + additional + changed; }
};

/// Answers as a recorded controller did and watches whether the module does what it did then.
/// docs/replay.md says what counts as a departure. Never makes a reply up. Not thread-safe: as the
/// script of a Controller it runs under that one's lock, and everybody else needs that lock too.
class Replay {
  public:
    explicit Replay(Trace trace, const ReplaySettings& settings = {});

    /// The recorded reply to a request as it stood on the wire; silence for one that the record
    /// does not have.
    ScriptedReply Answer(const std::string& request);
    /// Whether all commands were seen or missed and the polls behind them have been told.
    bool AtEnd() const;
    /// The host is done. At the end of the record, what the module had to ask for and did not
    /// counts as missing.
    void Finish();

    const ReplayCounts& Counts() const { return counts_; }
    /// Departures and notes, one line each, with the trace's line numbers; those since the last
    /// call.
    std::vector<std::string> TakeMessages();
    /// Where the record stands, and the counts: several lines.
    std::string Summary() const;

  private:
    enum class State { Waiting, Answered, PassedOver };

    void Rewind();
    CommandLane& LaneOf(std::string_view request);
    bool BeginsAnew(const std::string& request) const;
    bool PrecedesTheRecord(const std::string& request) const;

    ScriptedReply AnswerPoll(PollLane& lane);
    ScriptedReply AnswerCommand(const std::string& request);
    ScriptedReply AnswerUnknown(const std::string& request);
    ScriptedReply Tell(std::size_t index) const;
    bool GiveUpLimit(const PollLane& lane);

    void PassOver(CommandLane& lane, std::size_t position, const std::string& instead);
    void Pass(CommandLane& lane, State state);
    void CheckSpan(const PollLane& lane);

    void Missing(std::size_t index, const std::string& why);
    void Say(std::string text) { messages_.push_back(std::move(text)); }
    /// "line 57: @SSWC?"
    std::string Entry(std::size_t index) const;
    std::string NextEntry() const;

    Trace trace_;
    ReplaySettings settings_;
    std::vector<State> states_;
    CommandLane direct_;  ///< sent by the host's threads
    CommandLane posted_;  ///< sent by the module's worker
    std::vector<PollLane> polls_;
    std::size_t reached_ = 0;  ///< the place behind the last command seen
    bool hasBegun_ = false;
    bool endIsTold_ = false;
    ReplayCounts counts_;
    std::set<std::string, std::less<>> reported_;
    std::vector<std::string> messages_;
};

/// What a trace holds and what of it could not be used, for people: several lines.
std::string Describe(const Trace& trace);

}  // namespace simulator
