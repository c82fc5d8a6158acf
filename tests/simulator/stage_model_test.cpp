#include "simulator/stage_model.h"

#include <gtest/gtest.h>

#include <chrono>

namespace simulator {
namespace {

using namespace std::chrono_literals;

/// X at 1000 counts a second, full speed after half a second.
class StageModelTest : public testing::Test {
  protected:
    StageModelTest() {
        x().Settings().speed = 1000;
        x().Settings().acceleration = 2000;
    }

    Axis& x() { return model_.At(AxisName::X); }
    void Pass(Time time) { model_.AdvanceTo(now_ += time); }

    StageModel model_;

  private:
    Time now_{0};
};

TEST_F(StageModelTest, TravelsWithTrapezoidalSpeed) {
    ASSERT_TRUE(model_.MoveTo({2000, 0, 0}));
    EXPECT_TRUE(x().Moving());
    EXPECT_FALSE(model_.At(AxisName::Y).Moving());
    // Distance over time: a t^2 / 2 up to half a second, then even speed.
    Pass(250ms);
    EXPECT_NEAR(x().Counts(), 62, 2);
    Pass(250ms);
    EXPECT_NEAR(x().Counts(), 250, 2);
    Pass(1s);
    EXPECT_NEAR(x().Counts(), 1250, 2);
    Pass(970ms);
    EXPECT_TRUE(x().Moving());
    EXPECT_EQ(x().Condition().result, 0);
    Pass(50ms);
    EXPECT_FALSE(x().Moving());
    EXPECT_EQ(x().Counts(), 2000);
    EXPECT_EQ(x().Condition().result, 1);
}

TEST_F(StageModelTest, LookingOftenChangesNothing) {
    StageModel once;
    for (StageModel* model : {&model_, &once}) {
        model->At(AxisName::X).Settings() = x().Settings();
        ASSERT_TRUE(model->MoveTo({-5000, 0, 0}));
    }
    for (int i = 0; i < 1700; ++i) {
        Pass(777us);
    }
    once.AdvanceTo(1700 * 777us);
    EXPECT_EQ(x().Counts(), once.At(AxisName::X).Counts());
}

TEST_F(StageModelTest, NewMoveUnderWayBrakesAndTurnsBack) {
    ASSERT_TRUE(model_.MoveTo({100'000, 0, 0}));
    Pass(2s);
    ASSERT_TRUE(model_.MoveTo({0, 0, 0}));
    const auto turned = x().Counts();
    Pass(100ms);
    EXPECT_GT(x().Counts(), turned);
    Pass(1h);
    EXPECT_EQ(x().Counts(), 0);
    EXPECT_EQ(x().Condition().result, 1);
}

TEST_F(StageModelTest, LimitsEndAMoveBadly) {
    struct Case {
        double lowerSoft, upperSoft, lowerHard, upperHard;
        std::int32_t target, end;
        int result, hard, soft;
    };
    const Case cases[] = {
        {-900, 900, -990, 990, 900, 900, 1, 0, 0},
        {-900, 900, -990, 990, 901, 900, 2, 0, 1},
        {-900, 900, -990, 990, -5000, -900, 2, 0, 2},
        {-9000, 9000, -990, 990, 5000, 990, 2, 1, 0},
        {-9000, 9000, -990, 990, -991, -990, 2, 2, 0},
        // Standing beyond a limit: back in is free, farther out is not.
        {-900, -100, -990, 990, -150, -150, 1, 0, 0},
        {-900, -100, -990, 990, 50, 0, 2, 0, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.target);
        model_.Place({0, 0, 0});
        AxisSettings& settings = x().Settings();
        settings.lowerSoftLimit = c.lowerSoft;
        settings.upperSoftLimit = c.upperSoft;
        settings.lowerHardLimit = c.lowerHard;
        settings.upperHardLimit = c.upperHard;
        ASSERT_TRUE(model_.MoveTo({c.target, 0, 0}));
        if (c.end != 0) {
            EXPECT_EQ(x().Condition().result, 0) << "an old move's end still shows";
            EXPECT_EQ(x().Condition().softLimit, 0);
        }
        Pass(10s);
        EXPECT_EQ(x().Counts(), c.end);
        EXPECT_EQ(x().Condition().result, c.result);
        EXPECT_EQ(x().Condition().hardLimit, c.hard);
        EXPECT_EQ(x().Condition().softLimit, c.soft);
    }
}

TEST_F(StageModelTest, CancelBringsTheAxesToAStop) {
    model_.Cancel();
    EXPECT_FALSE(model_.Cancelled()) << "nothing was under way";
    ASSERT_TRUE(model_.MoveTo({100'000, 0, 0}));
    Pass(1s);
    model_.Cancel();
    EXPECT_TRUE(model_.Cancelled());
    EXPECT_TRUE(x().Moving());
    const auto counts = x().Counts();
    Pass(600ms);
    EXPECT_FALSE(x().Moving());
    EXPECT_NEAR(x().Counts(), counts + 250, 2);
    EXPECT_EQ(x().Condition().result, 2);
    EXPECT_EQ(model_.At(AxisName::Y).Condition().result, 1);
    ASSERT_TRUE(model_.MoveTo({0, 0, 0}));
    EXPECT_FALSE(model_.Cancelled());
    EXPECT_EQ(x().Condition().result, 0);
}

TEST_F(StageModelTest, MotionDelayHidesTheStart) {
    model_.SetMotionDelay(300ms);
    ASSERT_TRUE(model_.MoveTo({1000, 0, 0}));
    Pass(290ms);
    EXPECT_FALSE(x().Moving());
    EXPECT_EQ(x().Condition().result, 0);
    EXPECT_EQ(x().Counts(), 0);
    Pass(20ms);
    EXPECT_TRUE(x().Moving());
    Pass(5s);
    EXPECT_EQ(x().Condition().result, 1);
}

TEST_F(StageModelTest, ManualHomeEndsWhereTheHandPassesTheOrigin) {
    x().Settings().handSpeed = 1000;
    x().Place(-500);
    x().PlaceOrigin(250);
    ASSERT_TRUE(x().StartManualHome());
    x().HandMove(700);
    Pass(10s);
    EXPECT_EQ(x().Home(), HomeStatus::UnderWay);
    x().HandMove(150);
    Pass(10s);
    EXPECT_EQ(x().Home(), HomeStatus::Finished);
    EXPECT_NEAR(x().Counts(), 100, 1) << "the origin has become 0";
    ASSERT_TRUE(x().StartManualHome());
    x().StopManualHome();
    EXPECT_EQ(x().Home(), HomeStatus::Idle);
}

TEST_F(StageModelTest, AutomaticHomeTravelsAndSettles) {
    x().Place(1500);
    x().PlaceOrigin(500);
    ASSERT_TRUE(x().StartAutomaticHome());
    EXPECT_FALSE(model_.MoveTo({0, 0, 0})) << "the motor is busy";
    Pass(1600ms);
    EXPECT_EQ(x().Counts(), 500);
    EXPECT_EQ(x().Home(), HomeStatus::UnderWay);
    Pass(200ms);
    EXPECT_EQ(x().Home(), HomeStatus::Finished);
    EXPECT_EQ(x().Counts(), 0);
}

TEST_F(StageModelTest, HomingIsRefusedAndFailsOnDemand) {
    x().Settings().homeOutcome = HomeOutcome::Refuse;
    EXPECT_FALSE(x().StartManualHome());
    EXPECT_FALSE(x().StartAutomaticHome());
    EXPECT_EQ(x().Home(), HomeStatus::Idle);
    x().Settings().homeOutcome = HomeOutcome::Fail;
    ASSERT_TRUE(x().StartAutomaticHome());
    Pass(1s);
    EXPECT_EQ(x().Home(), HomeStatus::Failed);
    x().Settings().homeOutcome = HomeOutcome::Ok;
    x().Place(5000);
    ASSERT_TRUE(x().StartAutomaticHome());
    Pass(1s);
    model_.Cancel();
    EXPECT_EQ(x().Home(), HomeStatus::Failed);
    Pass(1s);
    EXPECT_FALSE(x().Moving());
}

}  // namespace
}  // namespace simulator
