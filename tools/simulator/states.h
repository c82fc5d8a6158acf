#pragma once

#include <span>
#include <string_view>

#include "simulator/stage_model.h"

namespace simulator {

/// A state in which the stage can be found.
struct NamedState {
    std::string_view name;
    /// For people.
    std::string_view meaning;
    /// Leads there from a stage just switched on, at the default speeds; time stands still.
    void (*enter)(StageModel& model);
};

/// All states that have a name; the first is that of a new StageModel.
std::span<const NamedState> NamedStates();

/// Puts the whole stage into the state, whatever it was in before. Settings of the axes stay, but
/// for their errors. False: there is no state of that name.
bool EnterState(StageModel& model, std::string_view name);

}  // namespace simulator
