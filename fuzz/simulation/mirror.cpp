#include "simulation/mirror.h"

#include <algorithm>

#include "simulation/trace.h"

namespace simulation {

Mirror::State Mirror::Merged(State state, const Record& record) {
    Merge(record, state.data);
    state.merged = true;
    return state;
}

Mirror::State Mirror::Taken(State state) {
    SswcReply& sswc = state.data.sswc;
    state.taken = LatchResult{
        .anySwitch = sswc.EMER_SW == 1 || sswc.SW_Y == 1 || sswc.DATA_SW == 1 || sswc.FOOT_SW == 1,
        .emergency = sswc.EMER_SW == 1,
        .lampChanged = state.data.labr.lampChanged != 0};
    sswc.EMER_SW = sswc.SW_Y = sswc.DATA_SW = sswc.FOOT_SW = 0;
    state.data.labr.lampChanged = 0;
    return state;
}

std::string Mirror::Key(const State& state) {
    std::string key = Shown(state.data) + (state.merged ? " merged" : "");
    if (state.taken) {
        key += state.taken->anySwitch ? " switch" : " none";
        key += state.taken->emergency ? " emergency" : "";
        key += state.taken->lampChanged ? " lamp" : "";
    }
    return key;
}

void Mirror::AddMerged(const std::optional<Record>& record) {
    const std::vector<State> before = states_;
    for (const State& state : before) {
        if (record && !state.merged) {
            states_.push_back(Merged(state, *record));
        }
    }
    Round();
}

void Mirror::Round() {
    const std::vector<State> before = states_;
    for (const State& state : before) {
        if (takes_ && !state.taken) {
            states_.push_back(Taken(state));
        }
    }
    std::set<std::string> seen;
    std::erase_if(states_, [&](const State& one) { return !seen.insert(Key(one)).second; });
    if (accepted_) {
        for (const State& state : states_) {
            accepted_->insert(Shown(state.data, scale_));
        }
    }
}

void Mirror::Settle(const std::optional<Record>& brought) {
    AddMerged(brought);
    std::erase_if(states_, [&](const State& one) { return brought && !one.merged; });
    for (State& state : states_) {
        state.merged = false;
    }
    Round();
}

void Mirror::StillReads() {
    std::erase_if(states_, &State::merged);
    Require(!states_.empty(), "a reply is taken over that has not been read");
}

void Mirror::BeginSnapshot() {
    accepted_.emplace();
    Round();
}

void Mirror::EndSnapshot(const OviskData& data, const std::optional<Record>& underWay) {
    const std::vector<State> before = states_;
    AddMerged(underWay);
    states_ = before;
    Require(accepted_->contains(Shown(data)), "the record is none that the replies make",
            Shown(data) + " instead of " + *accepted_->rbegin());
    accepted_.reset();
}

void Mirror::BeginTake() {
    takes_ = true;
    Round();
}

void Mirror::EndTake(const LatchResult& result, const std::optional<Record>& underWay) {
    AddMerged(underWay);
    takes_ = false;
    std::erase_if(states_, [&](const State& one) { return one.taken != result; });
    Require(!states_.empty(), "latches are told that the replies do not make, or lost");
    for (State& state : states_) {
        state.taken.reset();
    }
    Round();
}

}  // namespace simulation
