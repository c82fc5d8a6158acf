#pragma once

#include "simulator/axis.h"

namespace simulator {

/// The time of the stage, which may run faster or slower than that of the line. The line keeps
/// real time in any case, since a real host hangs on it.
class StageClock {
  public:
    double Factor() const { return factor_; }
    /// `factor` above 0; holds from `now` on.
    void SetFactor(double factor, Time now) {
        stage_ = At(now);
        line_ = now;
        factor_ = factor;
    }
    /// The stage's time at `now` of the line, which must not lie before the last change.
    Time At(Time now) const {
        return stage_ +
               Time(static_cast<Time::rep>(static_cast<double>((now - line_).count()) * factor_));
    }

  private:
    double factor_ = 1;
    Time line_{0};
    Time stage_{0};
};

}  // namespace simulator
