#include "simulator/states.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace simulator {

namespace {

constexpr std::array Axes{AxisName::X, AxisName::Y, AxisName::Z};
constexpr int HalfASecond = std::chrono::milliseconds(500) / StepTime;

void Pass(StageModel& model, int steps) {
    for (const AxisName name : Axes) {
        for (int i = 0; i < steps; ++i) {
            model.At(name).Step();
        }
    }
}

void PassUntilRest(StageModel& model) {
    for (const AxisName name : Axes) {
        while (!model.At(name).AtRest()) {
            model.At(name).Step();
        }
    }
}

void Fresh(StageModel& /*model*/) {}

void Unhomed(StageModel& model) {
    model.At(AxisName::X).PlaceOrigin(-300'000);
    model.At(AxisName::Y).PlaceOrigin(200'000);
}

void Homing(StageModel& model) {
    model.At(AxisName::X).PlaceOrigin(-1'500'000);
    model.At(AxisName::Y).PlaceOrigin(1'000'000);
    model.StartAutomaticHome(AxisName::X);
    model.StartAutomaticHome(AxisName::Y);
    Pass(model, HalfASecond);
}

void Homed(StageModel& model) {
    model.StartAutomaticHome(AxisName::X);
    model.StartAutomaticHome(AxisName::Y);
    PassUntilRest(model);
}

void HomeFailed(StageModel& model) {
    model.At(AxisName::X).Settings().homeOutcome = HomeOutcome::Fail;
    model.At(AxisName::Y).Settings().homeOutcome = HomeOutcome::Fail;
    Homed(model);
}

void Moving(StageModel& model) {
    model.MoveTo({1'900'000, -1'900'000, 1'000'000});
    Pass(model, HalfASecond);
}

void OnLimit(StageModel& model) {
    // Z keeps its soft limits, so that both kinds are there.
    model.At(AxisName::X).Settings().upperSoftLimit = 3'000'000;
    model.At(AxisName::Y).Settings().lowerSoftLimit = -3'000'000;
    model.MoveTo({3'000'000, -3'000'000, 3'000'000});
    PassUntilRest(model);
}

void Emergency(StageModel& model) {
    Moving(model);
    model.SetSwitch(EmergencySwitch, 1);
    model.Cancel();
    PassUntilRest(model);
}

void AxisErrors(StageModel& model) {
    model.At(AxisName::X).Settings().error = "E1";
    model.At(AxisName::Y).Settings().error = "F2";
    model.At(AxisName::Z).Settings().error = "E3";
}

constexpr std::array States{
    NamedState{"fresh", "switched on a moment ago, at the origin, which it does not know", Fresh},
    NamedState{"unhomed", "the same, the origins of X and Y elsewhere", Unhomed},
    NamedState{"homing", "automatic origin returns of X and Y under way", Homing},
    NamedState{"homed", "X and Y have found their origins and stand there", Homed},
    NamedState{"home-failed", "the origin returns of X and Y have failed", HomeFailed},
    NamedState{"moving", "a long move of all axes under way", Moving},
    NamedState{"on-limit", "a move has ended at hard limits (X, Y) and a soft one (Z)", OnLimit},
    NamedState{"emergency", "the emergency switch has ended a move on its way", Emergency},
    NamedState{"axis-error", "every axis reports an error in place of its position", AxisErrors},
};

}  // namespace

std::span<const NamedState> NamedStates() {
    return States;
}

bool EnterState(StageModel& model, std::string_view name) {
    const auto* const state = std::ranges::find(States, name, &NamedState::name);
    if (state == States.end()) {
        return false;
    }
    std::array<AxisSettings, AxisCount> settings;
    model.Reset();
    for (std::size_t i = 0; i < settings.size(); ++i) {
        Axis& axis = model.At(Axes[i]);
        axis.PlaceOrigin(0);
        settings[i] = std::exchange(axis.Settings(), {});
    }
    for (int number = 1; number <= SwitchCount; ++number) {
        model.SetSwitch(number, 0);
    }
    state->enter(model);
    for (std::size_t i = 0; i < settings.size(); ++i) {
        settings[i].error = model.At(Axes[i]).Settings().error;
        model.At(Axes[i]).Settings() = settings[i];
    }
    return true;
}

}  // namespace simulator
