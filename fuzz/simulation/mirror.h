#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulation/reference.h"

namespace simulation {

struct LatchResult {
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    bool operator==(const LatchResult&) const = default;
};

/// What the host's record may hold, worked out from the bytes that the worker has read. Since
/// nobody outside sees the moment at which the module takes a reply over or hands its latches out,
/// there may be several answers; an observation that fits none of them breaks the rule.
class Mirror {
  public:
    explicit Mirror(double scale) : scale_(scale), states_{State{}} {}

    /// The worker goes on: what its last exchange brought is in the record by now.
    void Settle(const std::optional<Record>& brought);
    /// The worker still reads: nothing of this exchange can be in the record yet.
    void StillReads();

    void BeginSnapshot();
    void EndSnapshot(const OviskData& data, const std::optional<Record>& underWay);
    void BeginTake();
    void EndTake(const LatchResult& result, const std::optional<Record>& underWay);

  private:
    struct State {
        OviskData data;
        bool merged = false;
        std::optional<LatchResult> taken;
    };

    static State Merged(State state, const Record& record);
    static State Taken(State state);
    static std::string Key(const State& state);
    void AddMerged(const std::optional<Record>& record);
    /// Ends every change: adds those that the open call may have met, and drops doubles.
    void Round();

    double scale_;
    std::vector<State> states_;
    bool takes_ = false;
    std::optional<std::set<std::string>> accepted_;
};

}  // namespace simulation
