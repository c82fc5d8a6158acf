#include "simulator/console.h"

#include <gtest/gtest.h>

#include "simulator/exerciser.h"

namespace simulator {
namespace {

TEST(Console, SetsTheStageAndTellsWrongLines) {
    StageModel model;
    for (const char* line : {"position 1 -2 3", "switch EMER_SW 1", "switch 16 5", "lamp 10 77",
                             "axis-error Z E1", "home-result Y fail", "hand X 10", "cancel"}) {
        EXPECT_EQ(RunConsoleLine(model, line), "ok") << line;
    }
    EXPECT_EQ(model.At(AxisName::Y).Counts(), -2);
    EXPECT_EQ(model.Switch(EmergencySwitch), 1);
    EXPECT_EQ(model.Switch(16), 5);
    EXPECT_EQ(model.Lamp(10), 77);
    EXPECT_EQ(model.At(AxisName::Z).Settings().error, "E1");
    EXPECT_EQ(model.At(AxisName::Y).Settings().homeOutcome, HomeOutcome::Fail);
    EXPECT_FALSE(model.At(AxisName::X).AtRest());
    EXPECT_EQ(RunConsoleLine(model, "axis-error Z none"), "ok");
    EXPECT_EQ(model.At(AxisName::Z).Settings().error, "");
    for (const char* line : {"position 1 2", "switch 17 1", "switch FOOT 1", "lamp 11 1",
                             "lamp 1 10001", "axis-error W E1", "hand X", "home-result X no"}) {
        EXPECT_TRUE(RunConsoleLine(model, line).starts_with("wrong values")) << line;
    }
    EXPECT_TRUE(RunConsoleLine(model, "jump").starts_with("unknown command"));
}

TEST(Exerciser, KeepsOffCommandedMovesAndGoesOnFromThere) {
    using namespace std::chrono_literals;
    StageModel model;
    Exerciser exerciser;
    exerciser.Step(model, 0s);
    exerciser.Step(model, 2s);
    EXPECT_NE(model.At(AxisName::X).Counts(), 0);
    ASSERT_TRUE(model.MoveTo({400'000, 0, 0}));
    exerciser.Step(model, 3s);
    model.AdvanceTo(10s);
    exerciser.Step(model, 5s);
    EXPECT_EQ(model.At(AxisName::X).Counts(), 400'000);
    exerciser.Step(model, 7s);
    exerciser.Step(model, 7050ms);
    EXPECT_NE(model.At(AxisName::X).Counts(), 400'000);
    EXPECT_NEAR(model.At(AxisName::X).Counts(), 400'000, 2'000);
    model.Place({0, 0, 0});
    exerciser.Step(model, 8s);
    exerciser.Step(model, 10s);
    EXPECT_EQ(model.At(AxisName::X).Counts(), 0);
}

}  // namespace
}  // namespace simulator
