#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace simulator {

/// Time since the simulated controller was switched on. Nothing below the Controller has a clock.
using Time = std::chrono::nanoseconds;

/// Motion is worked out in steps of this length, on a fixed grid, so that the result does not
/// depend on how often somebody looks.
inline constexpr Time StepTime = std::chrono::microseconds(100);

/// How far an origin return has come; the numbers go out on the wire.
enum class HomeStatus { Idle = 0, UnderWay = 1, Finished = 2, Failed = 3 };

/// What the next origin return of an axis shall come to.
enum class HomeOutcome { Ok, Refuse, Fail };

/// How an axis behaves. Positions in counts, speeds in counts a second.
struct AxisSettings {
    double speed = 500'000;
    double acceleration = 2'000'000;
    double lowerSoftLimit = -2'000'000;
    double upperSoftLimit = 2'000'000;
    double lowerHardLimit = -2'050'000;
    double upperHardLimit = 2'050'000;
    /// How fast the operator's hand moves the stage.
    double handSpeed = 200'000;
    /// An automatic origin return stands on the origin for this time before it is finished.
    Time settleTime = std::chrono::milliseconds(200);
    HomeOutcome homeOutcome = HomeOutcome::Ok;
    /// Stands in the place of the position, as "E1" or "F2"; empty: no error.
    std::string error;
};

/// How the last move of an axis stands; the numbers go out on the wire.
struct AxisCondition {
    /// 0: no move yet, or under way. 1: ended well. 2: ended badly.
    int result = 0;
    /// 0: not at the limit. 1: at the upper limit. 2: at the lower limit.
    int hardLimit = 0;
    int softLimit = 0;
};

/// One axis: travels with trapezoidal speed, stops at limits, finds its origin. Not thread-safe.
class Axis {
  public:
    AxisSettings& Settings() { return settings_; }
    const AxisSettings& Settings() const { return settings_; }

    /// Position in whole counts, held to the 32 bits of the wire.
    std::int32_t Counts() const;
    /// True while the motor drives the axis, in a move or in an automatic origin return.
    bool Moving() const;
    /// True from the acceptance of a move or origin return until the motor stands.
    bool Commanded() const { return activity_ != Activity::Idle; }
    /// True if time alone changes nothing any more.
    bool AtRest() const { return activity_ == Activity::Idle && handRemaining_ == 0; }
    AxisCondition Condition() const { return condition_; }
    HomeStatus Home() const { return homeStatus_; }
    /// True while an automatic origin return travels or settles.
    bool HomingAutomatically() const;

    /// Puts the axis there at once, as if it had always stood there. A move goes on from there.
    void Place(double counts) { position_ = counts; }
    /// Says where the origin lies in present counts; finding it makes that place 0.
    void PlaceOrigin(double counts) { origin_ = counts; }
    double Origin() const { return origin_; }
    /// The operator's hand moves the axis by so many counts at the hand's speed. A driven axis
    /// does not give way: the hand waits until it stands.
    void HandMove(double counts) { handRemaining_ += counts; }

    /// Starts a move and forgets how the last one ended. A resting axis stands still for `delay`
    /// before it shows motion.
    void StartMove(double target, Time delay);
    /// Brings a driven axis to a stop: a move ends badly, an origin return fails.
    void Cancel();
    /// Starts the origin return that needs the operator's hand. False: refused.
    bool StartManualHome();
    void StopManualHome();
    /// Starts the origin return that the motor does. False: refused.
    bool StartAutomaticHome();

    /// As after switching off and on: it stands dead still, its counter begins at 0 where it
    /// stands, and it knows of no move and no origin return. The origin stays in its place.
    void Reset();

    /// Lets one `StepTime` pass.
    void Step();

  private:
    enum class Activity { Idle, Waiting, Moving, HomeTravel, HomeSettle, Stopping };

    double LimitTarget(double target);
    void StepTravel();
    void StepHand();
    void Brake();
    void Arrive();
    void FinishHome();

    AxisSettings settings_;
    Activity activity_ = Activity::Idle;
    double position_ = 0;
    double velocity_ = 0;
    double target_ = 0;
    double origin_ = 0;
    double handRemaining_ = 0;
    Time wait_{0};
    AxisCondition condition_;
    /// What the condition becomes when the motor stands.
    AxisCondition ending_;
    HomeStatus homeStatus_ = HomeStatus::Idle;
};

}  // namespace simulator
