#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/zb_ovisk_plain.h"
#include "simulation/reference.h"
#include "simulation/report.h"

namespace simulation {

/// Whether the text is one that the module may send at all.
bool IsKnownRequest(const std::string& request);

/// Lamps: what is sent was posted, in its order, and the last value of each lamp goes out.
class LampRules {
  public:
    void Posted(std::int32_t lamp, std::int32_t value);
    /// `again`: a value may go out a second time, if the first one lost the line.
    void Sent(const std::string& request, bool again);
    /// Once everything that was posted must be out.
    void Finish() const;

  private:
    struct Lamp {
        std::deque<std::string> waiting;
        std::string lastPosted;
        std::string lastSent;
    };
    std::array<Lamp, 11> lamps_;
};

/// Moves: each is sent once, by its caller; whether it is accepted follows from the reply's form;
/// the end is told once, with the reply that shows it, unless something excuses that.
class MoveRules {
  public:
    /// `mends`: a condition that can't be read ends no watch, but the loss of the line does.
    MoveRules(Report& report, bool mends) : report_(report), mends_(mends) {}

    /// A call begins; gives the number that the callback is to bring back.
    std::size_t Asked(const std::string& caller, const std::string& request, bool wantsNotice,
                      std::uint32_t losses);
    void Sent(const std::string& caller, const std::string& request);
    void Returned(std::size_t number, bool accepted, const std::string& reply);
    /// The worker asks for something.
    void WorkerAsks(bool forCondition);
    void ConditionAnswered(const std::string& reply);
    void Told(std::size_t number, bool finished, bool error, const McndReply& reply,
              const std::string& wire);
    /// Around each reading of the health.
    void ReadingBegins();
    void ReadingEnds(const ZbOviskHealth& health) const;
    /// Told as an error without a reply: the line was lost.
    void ToldLost(std::size_t number, std::uint32_t losses);
    bool IsTold(std::size_t number) const { return moves_[number].told; }
    bool IsSent(std::size_t number) const { return moves_[number].sent != 0; }
    /// Once the stage stands and the line has been good for a while.
    void Finish() const;

  private:
    struct Move {
        std::string caller;
        std::string request;
        bool wantsNotice = false;
        std::uint32_t losses = 0;  ///< of the line, when it was asked for
        std::size_t sent = 0;      ///< the how manieth of those that were sent
        bool returned = false;
        bool accepted = false;
        bool told = false;
        bool toldError = false;
        bool toldBeforeReading = false;
        std::optional<std::string> refusal{};  ///< the controller's words
        bool excused = false;
        bool watchEnded = false;
    };
    static constexpr std::size_t None = SIZE_MAX;

    void Excuse(Move& move);
    void CheckState(const Move& move, const ZbOviskHealth& health) const;

    Report& report_;
    const bool mends_;
    std::vector<Move> moves_;
    std::size_t newestSent_ = None;
    std::size_t sent_ = 0;
    std::size_t sentBefore_ = 0;
    /// The newest accepted move whose call has returned: now, when the worker last asked for
    /// something, and, of when the condition was asked for, then and one request before. The worker
    /// chooses what it watches between these two.
    std::size_t proven_ = None;
    std::size_t provenAtRequest_ = None;
    std::size_t provenBefore_ = None;
    std::size_t watched_ = None;
    std::size_t provenBeforeReading_ = None;
    std::uint64_t acceptedBeforeReading_ = 0;
};

/// Homing: nothing starts that the operator has not asked for, Y follows X, and what has been
/// broken off stays so.
class HomingRules {
  public:
    HomingRules(Report& report, bool automatic) : report_(report), isAutomatic_(automatic) {}

    /// `settled`: everything that the run before posted is out.
    void Began(std::chrono::nanoseconds now, bool settled);
    void PressedOk(std::chrono::nanoseconds now);
    /// The press came to nothing, since the line was lost all the time.
    void OkWasRefused() { --okPresses_; }
    /// The line was lost: what was under way is over, and what was asked for before is void.
    void LineWasLost(std::chrono::nanoseconds now);
    void PressedCancel(bool stops);
    void Ended(std::chrono::nanoseconds now);
    void Sent(const std::string& request);
    /// The Home command has returned.
    void CheckHealth(const ZbOviskHealth& health) const;
    void ConditionAsked();
    void ConditionAnswered(const Exchange& exchange);
    /// Once everything that was posted must be out.
    void Finish() const;
    bool IsOpen() const { return open_; }

  private:
    enum class Watch { Nothing, X, Y };

    void StartSent(Watch axis, bool automatic);
    void Follow(const std::string& reply);

    Report& report_;
    const bool isAutomatic_;
    bool confirmed_ = false;
    bool open_ = false;
    bool settled_ = true;
    bool cancelled_ = false;
    bool mustStop_ = false;
    std::chrono::nanoseconds brokenSince_ = std::chrono::nanoseconds::max();
    std::uint64_t okPresses_ = 0;
    std::chrono::nanoseconds lastPress_{0};
    std::uint64_t starts_ = 0;
    std::array<int, 2> startsLeft_{};
    bool xFinished_ = false;
    /// The axis that the operator's hand homes: its start is out, its end and its stop are not.
    Watch byHand_ = Watch::Nothing;
    /// What the automatic procedure looks at.
    Watch automatic_ = Watch::Nothing;
    int spareConditions_ = 0;
};

}  // namespace simulation
