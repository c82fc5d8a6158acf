#include "simulator/axis.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace simulator {

namespace {

constexpr double StepSeconds = std::chrono::duration<double>(StepTime).count();
constexpr int AtUpperLimit = 1;
constexpr int AtLowerLimit = 2;
constexpr int EndedWell = 1;
constexpr int EndedBadly = 2;

int LimitSide(double wanted, double allowed) {
    return wanted > allowed ? AtUpperLimit : AtLowerLimit;
}

}  // namespace

std::int32_t Axis::Counts() const {
    constexpr double Lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double Highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::lround(std::clamp(position_, Lowest, Highest)));
}

bool Axis::Moving() const {
    return activity_ != Activity::Idle && activity_ != Activity::Waiting;
}

bool Axis::HomingAutomatically() const {
    return activity_ == Activity::HomeTravel || activity_ == Activity::HomeSettle;
}

void Axis::StartMove(double target, Time delay) {
    const bool wasMoving = Moving();
    condition_ = {};
    ending_ = {EndedWell, 0, 0};
    target_ = LimitTarget(target);
    if (!wasMoving && target_ == position_) {
        activity_ = Activity::Idle;
        condition_ = ending_;
        return;
    }
    wait_ = delay;
    activity_ = !wasMoving && delay > Time::zero() ? Activity::Waiting : Activity::Moving;
}

/// Where the way to `target` ends, with the limit that ends it noted for the arrival.
double Axis::LimitTarget(double target) {
    // An axis that stands beyond a limit may go back in, but no farther out.
    const auto hold = [this](double wanted, double lower, double upper) {
        return std::clamp(wanted, std::min(lower, position_), std::max(upper, position_));
    };
    const double soft = hold(target, settings_.lowerSoftLimit, settings_.upperSoftLimit);
    const double hard = hold(soft, settings_.lowerHardLimit, settings_.upperHardLimit);
    if (hard != soft) {
        ending_ = {EndedBadly, LimitSide(soft, hard), 0};
    } else if (soft != target) {
        ending_ = {EndedBadly, 0, LimitSide(target, soft)};
    }
    return hard;
}

void Axis::Cancel() {
    if (HomingAutomatically()) {
        homeStatus_ = HomeStatus::Failed;
    } else if (activity_ != Activity::Idle) {
        ending_ = {EndedBadly, 0, 0};
    }
    if (activity_ != Activity::Idle) {
        activity_ = Activity::Stopping;
        if (velocity_ == 0) {
            Arrive();
        }
    }
}

bool Axis::StartManualHome() {
    if (settings_.homeOutcome == HomeOutcome::Refuse || activity_ != Activity::Idle) {
        return false;
    }
    homeStatus_ = HomeStatus::UnderWay;
    return true;
}

void Axis::StopManualHome() {
    if (homeStatus_ == HomeStatus::UnderWay && !HomingAutomatically()) {
        homeStatus_ = HomeStatus::Idle;
    }
}

bool Axis::StartAutomaticHome() {
    if (settings_.homeOutcome == HomeOutcome::Refuse || activity_ != Activity::Idle) {
        return false;
    }
    homeStatus_ = HomeStatus::UnderWay;
    ending_ = condition_;
    target_ = origin_;
    activity_ = Activity::HomeTravel;
    return true;
}

void Axis::Reset() {
    origin_ -= std::exchange(position_, 0);
    activity_ = Activity::Idle;
    velocity_ = 0;
    handRemaining_ = 0;
    condition_ = {};
    homeStatus_ = HomeStatus::Idle;
}

void Axis::Step() {
    switch (activity_) {
        case Activity::Idle:
            StepHand();
            break;
        case Activity::Waiting:
        case Activity::HomeSettle:
            wait_ -= StepTime;
            if (wait_ <= Time::zero()) {
                activity_ == Activity::Waiting ? void(activity_ = Activity::Moving) : FinishHome();
            }
            break;
        case Activity::Moving:
        case Activity::HomeTravel:
            StepTravel();
            break;
        case Activity::Stopping:
            Brake();
            position_ += velocity_ * StepSeconds;
            if (velocity_ == 0) {
                Arrive();
            }
            break;
    }
}

void Axis::StepTravel() {
    const double way = target_ - position_;
    const double direction = way < 0 ? -1 : 1;
    if (velocity_ * direction < 0) {
        Brake();
    } else {
        // The fastest speed from which the axis can still stop on the target.
        const double stopping = std::sqrt(2 * settings_.acceleration * std::abs(way));
        const double gained = std::abs(velocity_) + settings_.acceleration * StepSeconds;
        velocity_ =
            direction * std::min({settings_.speed, stopping, gained, std::abs(way) / StepSeconds});
    }
    position_ += velocity_ * StepSeconds;
    // Less than this is rounding: the wire knows whole counts only.
    if (std::abs(target_ - position_) < 1e-3) {
        position_ = target_;
        velocity_ = 0;
        Arrive();
    }
}

void Axis::Brake() {
    const double loss = std::min(std::abs(velocity_), settings_.acceleration * StepSeconds);
    velocity_ -= std::copysign(loss, velocity_);
}

void Axis::Arrive() {
    if (activity_ == Activity::HomeTravel) {
        wait_ = settings_.settleTime;
        activity_ = Activity::HomeSettle;
        return;
    }
    condition_ = ending_;
    activity_ = Activity::Idle;
}

void Axis::FinishHome() {
    activity_ = Activity::Idle;
    if (settings_.homeOutcome == HomeOutcome::Fail) {
        homeStatus_ = HomeStatus::Failed;
        return;
    }
    position_ -= origin_;
    origin_ = 0;
    homeStatus_ = HomeStatus::Finished;
}

void Axis::StepHand() {
    if (handRemaining_ == 0) {
        return;
    }
    const double reach = settings_.handSpeed * StepSeconds;
    const double piece = std::clamp(handRemaining_, -reach, reach);
    handRemaining_ -= piece;
    const double before = position_;
    position_ = std::clamp(position_ + piece, std::min(settings_.lowerHardLimit, position_),
                           std::max(settings_.upperHardLimit, position_));
    const bool passed = (before - origin_) * (position_ - origin_) <= 0;
    if (passed && homeStatus_ == HomeStatus::UnderWay) {
        FinishHome();
    }
}

}  // namespace simulator
