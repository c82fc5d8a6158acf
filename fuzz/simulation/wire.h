#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "native/local_port.h"
#include "simulation/faults.h"
#include "simulation/plan.h"
#include "simulation/reference.h"
#include "simulator/protocol.h"
#include "simulator/request_reader.h"

namespace simulation {

/// The line with the controller behind it. It hears every request, spoils replies, tells the rules
/// what it sees, and knows what each thread has read.
class Wire : public LocalPeer {
  public:
    explicit Wire(const Plan& plan, Report& report);

    void Receive(std::string_view bytes, std::chrono::nanoseconds now) override;
    std::string TakeDue(std::size_t most, std::chrono::nanoseconds now) override;
    std::optional<std::chrono::nanoseconds> NextDue() override;

    /// The stage as it is now.
    simulator::StageModel& Stage();

    void PlugCable(bool in);
    /// The controller starts anew and is deaf meanwhile. Axes stay where they are.
    void Reset(Time starts);
    /// Ends all faults; the time at which the last of what they did has arrived.
    Time StopFaults();
    /// From now on all is well with the second poll at the latest. What has come meanwhile and was
    /// not read goes first: a read takes 255 bytes, so each such stretch of them costs one poll
    /// more.
    void ExpectLife();

    /// The calling thread looks at what waits on the line, or does so no more.
    void Look(bool begins) { looks_ = begins; }

    /// From now on a request of the worker breaks the rule.
    void WorkerMustBeSilent() { workerIsOver_ = true; }

    /// The exchange that a thread ran last.
    const Exchange& LastOf(const std::string& thread) { return exchanges_[thread]; }
    /// The exchange that came last to the line, whoever's.
    const Exchange& Newest() { return exchanges_[owner_]; }
    bool NewestIsWorkers() const;
    /// What the worker's exchange, as far as it is read, would add to the record.
    std::optional<Record> UnderWay();
    std::uint64_t Exchanges() const { return report_.exchanges; }
    /// Of those that began since life is expected.
    int PollsSinceCalm() const { return pollsSinceCalm_; }

  private:
    struct Outgoing {
        Time due;
        std::string bytes;
    };

    /// What the controller has answered, before anything was spoilt.
    struct Answered {
        std::string whole;
        bool isSpoilt = false;
    };

    void Judge(const std::string& thread, const std::string& request);
    void FinishWorkersExchange();
    void CountJoined(const Exchange& exchange, const Record& record);
    /// Where a reply can't be another's, its numbers are those of the controller's answer.
    void CompareWithAnswer(const Exchange& exchange, const Record& record);
    void Answer(const std::string& request, Time now);
    void NoteAnswer(const Answered& answered, const std::string& sent);
    std::string TakeLate(std::size_t most);
    void RequireNothingWaits();
    void Send(const std::string& bytes, Time begin);
    void Advance(Time now);
    Time ByteTimes(std::size_t count) const;

    const Plan& plan_;
    Report& report_;
    Faults faults_;
    simulator::StageModel stage_;
    simulator::Protocol protocol_{stage_};
    simulator::RequestReader reader_{Milliseconds(6)};
    std::map<std::string, Exchange> exchanges_;
    Answered answered_;  ///< to the worker's last request
    std::deque<std::string> olderReplies_;
    bool looks_ = false;
    bool foundLate_ = false;
    std::string owner_;
    bool unread_ = false;
    std::deque<Outgoing> outgoing_;
    std::string arrived_;
    Time waitsSince_{0};
    Time lineFree_{0};
    Time startedAt_{0};
    bool pluggedIn_ = true;
    bool workerIsOver_ = false;
    std::uint64_t calmSince_ = UINT64_MAX;
    int pollsSinceCalm_ = 0;
    int pollsAllowed_ = 0;
};

}  // namespace simulation
