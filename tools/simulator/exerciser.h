#pragma once

#include <array>

#include "simulator/stage_model.h"

namespace simulator {

/// Keeps an idle stage alive for demonstrations: the axes follow a slow figure, the foot switch
/// is pressed and a lamp value changes now and then, and an origin return by hand gets the hand
/// that it needs. It keeps off while a command is carried out,
/// while an origin return runs and when somebody puts the axes elsewhere, and for a while
/// afterwards, and then goes on from where the axes stand.
class Exerciser {
  public:
    /// Sets the stage to what the figure has at `now`. Call it some 20 times a second.
    void Step(StageModel& model, Time now);

  private:
    bool Disturbed(const StageModel& model) const;
    void Resume(const StageModel& model);

    std::array<double, AxisCount> centre_{};
    std::array<double, AxisCount> place_{};
    Time elapsed_{0};
    Time last_{0};
    Time quietUntil_{0};
    bool running_ = false;
};

}  // namespace simulator
