#include "simulator/stage_model.h"

#include <gtest/gtest.h>

#include <chrono>
#include <tuple>

namespace simulator {
namespace {

using namespace std::chrono_literals;

/// X at 1000 counts a second, full speed after half a second.
class StageModelTest : public testing::Test {
  protected:
    StageModelTest() {
        x.Settings().speed = 1000;
        x.Settings().acceleration = 2000;
    }

    void Pass(Time time) { model.AdvanceTo(now += time); }

    StageModel model;
    Axis& x = model.At(AxisName::X);
    Time now{0};
};

TEST_F(StageModelTest, TravelsWithTrapezoidalSpeedAfterTheMotionDelay) {
    model.SetMotionDelay(300ms);
    ASSERT_TRUE(model.MoveTo({2000, 0, 0}));
    // Distance over time: a t^2 / 2 up to half a second, then even speed.
    const std::tuple<Time, double, bool> moments[] = {{290ms, 0, false},    {550ms, 62, true},
                                                      {800ms, 250, true},   {1800ms, 1250, true},
                                                      {2770ms, 1999, true}, {2820ms, 2000, false}};
    for (const auto& [time, counts, moving] : moments) {
        model.AdvanceTo(time);
        EXPECT_NEAR(x.Counts(), counts, 2);
        EXPECT_EQ(x.Moving(), moving) << counts;
        EXPECT_EQ(x.Condition().result, counts == 2000 ? 1 : 0) << counts;
    }
}

TEST_F(StageModelTest, LimitsEndAMoveBadly) {
    // Soft limits, target and end, then the condition: result, hard limit, soft limit. Standing
    // beyond a limit, back in is free and farther out is not.
    using Condition = std::tuple<int, int, int>;
    const std::tuple<double, double, std::int32_t, std::int32_t, Condition> cases[] = {
        {-900, 900, 900, 900, {1, 0, 0}},     {-900, 900, 901, 900, {2, 0, 1}},
        {-900, 900, -5000, -900, {2, 0, 2}},  {-9000, 9000, 5000, 990, {2, 1, 0}},
        {-9000, 9000, -991, -990, {2, 2, 0}}, {-900, -100, -150, -150, {1, 0, 0}},
        {-900, -100, 50, 0, {2, 0, 1}}};
    x.Settings().lowerHardLimit = -990;
    x.Settings().upperHardLimit = 990;
    for (const auto& [lower, upper, target, end, condition] : cases) {
        model.Place({0, 0, 0});
        x.Settings().lowerSoftLimit = lower;
        x.Settings().upperSoftLimit = upper;
        ASSERT_TRUE(model.MoveTo({target, 0, 0}));
        Pass(10s);
        EXPECT_EQ(x.Counts(), end);
        const AxisCondition shown = x.Condition();
        EXPECT_EQ(Condition(shown.result, shown.hardLimit, shown.softLimit), condition) << target;
    }
}

TEST_F(StageModelTest, CancelBrakesAndANewMoveTurnsBack) {
    ASSERT_TRUE(model.MoveTo({100'000, 0, 0}));
    Pass(1s);
    model.Cancel();
    const auto counts = x.Counts();
    Pass(600ms);
    EXPECT_NEAR(x.Counts(), counts + 250, 2);
    EXPECT_TRUE(model.Cancelled());
    EXPECT_EQ(x.Condition().result, 2);
    ASSERT_TRUE(model.MoveTo({100'000, 0, 0}));
    EXPECT_FALSE(model.Cancelled());
    Pass(1s);
    ASSERT_TRUE(model.MoveTo({0, 0, 0}));
    Pass(1h);
    EXPECT_EQ(x.Counts(), 0);
}

TEST_F(StageModelTest, ManualHomeEndsWhereTheHandPassesTheOrigin) {
    x.Place(-500);
    x.PlaceOrigin(250);
    ASSERT_TRUE(x.StartManualHome());
    x.HandMove(700);
    Pass(10s);
    EXPECT_EQ(x.Home(), HomeStatus::UnderWay);
    x.HandMove(150);
    Pass(10s);
    EXPECT_EQ(x.Home(), HomeStatus::Finished);
    EXPECT_NEAR(x.Counts(), 100, 1) << "the origin has become 0";
}

TEST_F(StageModelTest, AutomaticHomeIsRefusedFailsOrFinishes) {
    x.Settings().homeOutcome = HomeOutcome::Refuse;
    EXPECT_FALSE(x.StartAutomaticHome() || x.StartManualHome());
    EXPECT_EQ(x.Home(), HomeStatus::Idle);
    for (const HomeOutcome outcome : {HomeOutcome::Fail, HomeOutcome::Ok}) {
        x.Settings().homeOutcome = outcome;
        x.Place(1500);
        x.PlaceOrigin(500);
        ASSERT_TRUE(x.StartAutomaticHome());
        Pass(1600ms);
        EXPECT_EQ(x.Counts(), 500);
        EXPECT_EQ(x.Home(), HomeStatus::UnderWay);
        Pass(200ms);
        const bool well = outcome == HomeOutcome::Ok;
        EXPECT_EQ(x.Home(), well ? HomeStatus::Finished : HomeStatus::Failed);
        EXPECT_EQ(x.Counts(), well ? 0 : 500);
    }
    x.Place(5000);
    ASSERT_TRUE(x.StartAutomaticHome());
    model.Cancel();
    EXPECT_EQ(x.Home(), HomeStatus::Failed);
}

}  // namespace
}  // namespace simulator
