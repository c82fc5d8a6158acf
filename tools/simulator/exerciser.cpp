#include "simulator/exerciser.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace simulator {

namespace {

constexpr Time Rest = std::chrono::seconds(6);
constexpr double Reach = 50'000;
// Turns a minute of each axis: with no common measure small enough for the figure to look still.
constexpr std::array TurnsPerMinute{3.0, 2.0, 1.0};
constexpr std::array<AxisName, AxisCount> Axes{AxisName::X, AxisName::Y, AxisName::Z};
constexpr int ChangingLamp = 5;

std::array<double, AxisCount> Figure(Time elapsed) {
    const double minutes = std::chrono::duration<double, std::ratio<60>>(elapsed).count();
    std::array<double, AxisCount> figure{};
    for (std::size_t i = 0; i < figure.size(); ++i) {
        figure[i] = Reach * std::sin(2 * std::numbers::pi * TurnsPerMinute[i] * minutes);
    }
    return figure;
}

/// The operator's hands: bring an axis whose origin is looked for past it.
void UseHands(StageModel& model) {
    constexpr double Overshoot = 20'000;
    for (const AxisName name : Axes) {
        Axis& axis = model.At(name);
        if (axis.Home() == HomeStatus::UnderWay && !axis.HomingAutomatically() && axis.AtRest()) {
            const double way = axis.Origin() - axis.Counts();
            axis.HandMove(way + (way < 0 ? -Overshoot : Overshoot));
        }
    }
}

}  // namespace

/// True if somebody else has moved the axes since the last step, or is about to.
bool Exerciser::Disturbed(const StageModel& model) const {
    const auto moved = [&](AxisName axis) {
        return model.At(axis).Counts() != std::lround(place_[static_cast<std::size_t>(axis)]);
    };
    return model.Commanded() || model.Homing() || (running_ && std::ranges::any_of(Axes, moved));
}

void Exerciser::Step(StageModel& model, Time now) {
    UseHands(model);
    if (Disturbed(model)) {
        running_ = false;
        quietUntil_ = now + Rest;
        return;
    }
    if (now < quietUntil_) {
        return;
    }
    if (!running_) {
        Resume(model);
        last_ = now;
        running_ = true;
    }
    elapsed_ += now - last_;
    last_ = now;
    place_ = Figure(elapsed_);
    for (std::size_t i = 0; i < place_.size(); ++i) {
        place_[i] += centre_[i];
    }
    model.Place(place_);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(elapsed_).count();
    model.SetSwitch(FootSwitch, seconds % 4 == 3 ? 1 : 0);
    model.SetLamp(ChangingLamp, static_cast<std::int32_t>(seconds / 3 % 5) * FullLamp / 4);
}

/// Lays the figure so that its present point is where the axes stand.
void Exerciser::Resume(const StageModel& model) {
    const auto figure = Figure(elapsed_);
    for (std::size_t i = 0; i < centre_.size(); ++i) {
        centre_[i] = model.At(Axes[i]).Counts() - figure[i];
    }
}

}  // namespace simulator
