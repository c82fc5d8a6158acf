#include "simulator/stage_model.h"

#include <algorithm>

namespace simulator {

void StageModel::AdvanceTo(Time now) {
    while (now_ + StepTime <= now) {
        if (std::ranges::all_of(axes_, &Axis::AtRest)) {
            now_ += (now - now_) / StepTime * StepTime;
            return;
        }
        std::ranges::for_each(axes_, &Axis::Step);
        now_ += StepTime;
    }
}

void StageModel::Place(const std::array<double, AxisCount>& counts) {
    for (std::size_t i = 0; i < axes_.size(); ++i) {
        axes_[i].Place(counts[i]);
    }
}

bool StageModel::MoveTo(const std::array<std::int32_t, AxisCount>& counts) {
    if (std::ranges::any_of(axes_, &Axis::HomingAutomatically)) {
        return false;
    }
    cancelled_ = false;
    for (std::size_t i = 0; i < axes_.size(); ++i) {
        axes_[i].StartMove(counts[i], motionDelay_);
    }
    return true;
}

void StageModel::Cancel() {
    cancelled_ = cancelled_ || Commanded();
    std::ranges::for_each(axes_, &Axis::Cancel);
}

void StageModel::Reset() {
    std::ranges::for_each(axes_, &Axis::Reset);
    lamps_ = {};
    cancelled_ = false;
    remote_ = false;
}

bool StageModel::Commanded() const {
    return std::ranges::any_of(axes_, &Axis::Commanded);
}

bool StageModel::Homing() const {
    return std::ranges::any_of(
        axes_, [](const Axis& axis) { return axis.Home() == HomeStatus::UnderWay; });
}

bool StageModel::SetSwitch(int number, std::int32_t value) {
    if (number < 1 || number > SwitchCount) {
        return false;
    }
    switches_[static_cast<std::size_t>(number - 1)] = value;
    return true;
}

std::int32_t StageModel::Switch(int number) const {
    const bool known = number >= 1 && number <= SwitchCount;
    return known ? switches_[static_cast<std::size_t>(number - 1)] : 0;
}

bool StageModel::SetLamp(int lamp, std::int32_t value) {
    if (lamp < 0 || lamp >= LampCount || value < 0 || value > FullLamp) {
        return false;
    }
    lamps_[static_cast<std::size_t>(lamp)] = value;
    return true;
}

std::int32_t StageModel::Lamp(int lamp) const {
    const bool known = lamp >= 0 && lamp < LampCount;
    return known ? lamps_[static_cast<std::size_t>(lamp)] : 0;
}

}  // namespace simulator
