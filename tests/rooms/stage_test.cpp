#include "stage/stage_data.h"

#include <limits>

#include "rooms/room_test.h"
#include "settings/settings.h"

using test_support::RoomTest;

namespace {

class StageTest : public RoomTest {
  protected:
    StageTest() {
        TakeLatches();
        MergeLamps({});
        TakeLatches();
    }
    static OviskData Snapshot() {
        OviskData data;
        CopyStageData(data);
        return data;
    }
};

TEST_F(StageTest, PositionsAreScaledAndRounded) {
    constexpr int Most = std::numeric_limits<int>::max();
    constexpr int Least = std::numeric_limits<int>::min();
    const struct {
        double scale;
        int counts;
        int expected;
    } cases[] = {
        {100.0, 250, 3},    {100.0, 249, 2},     {100.0, -150, -2},
        {100.0, -149, -1},  {100.0, 0, 0},       {250.5, 501, 2},
        {-10.0, 100, -10},  {1.0, Least, Least}, {1e-6, 1000, 1000000000},
        {1e-9, 1000, Most}, {1e-300, -1, Least}, {-1.0, Least, Most},
        {1e300, Most, 0},   {2.0, -1, -1},       {6.000000000000001, 3, 0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.counts << " / " << test.scale);
        ScaleFactor = test.scale;
        CposmrReply reply;
        reply.y = test.counts;
        MergePosition(std::move(reply));
        EXPECT_EQ(Snapshot().cposmr.y, test.expected);
    }
}

TEST_F(StageTest, HostsTextsAreReplaced) {
    CposmrReply reply;
    reply.xError = 1;
    reply.xErrorText = "E1, a text that is longer than any small string";
    MergePosition(std::move(reply));
    OviskData data;
    data.cposmr.replyErrorText = "old";
    data.cposmr.yErrorText = "an old text that is longer than any small string";
    data.sswc.replyErrorText = "old";
    CopyStageData(data);
    EXPECT_EQ(data.cposmr.xErrorText, "E1, a text that is longer than any small string");
    EXPECT_EQ(data.cposmr.yErrorText + data.cposmr.replyErrorText + data.sswc.replyErrorText, "");
}

TEST_F(StageTest, SwitchesLatchUntilTaken) {
    SswcReply active;
    active.SW_Y = 1;
    active.EMER_SW = 2;
    active.MEAS_MODE = 1;
    active.sswc16 = 7;
    MergeSwitches(std::move(active));
    MergeSwitches({});  // Everything is inactive again.
    EXPECT_EQ(Snapshot().sswc.SW_Y, 1);
    EXPECT_EQ(Snapshot().sswc.EMER_SW, 0);
    EXPECT_EQ(Snapshot().sswc.MEAS_MODE + Snapshot().sswc.sswc16, 0);

    Latches latches = TakeLatches();
    EXPECT_TRUE(latches.anySwitch);
    EXPECT_FALSE(latches.emergency || latches.lampChanged);
    latches = TakeLatches();
    EXPECT_FALSE(latches.anySwitch || latches.emergency || latches.lampChanged);
}

TEST_F(StageTest, EachLatchTellsItsOwn) {
    const struct {
        std::int32_t SswcReply::*field;
        bool any, emergency;
    } cases[] = {
        {&SswcReply::EMER_SW, true, true},     {&SswcReply::SW_Y, true, false},
        {&SswcReply::DATA_SW, true, false},    {&SswcReply::FOOT_SW, true, false},
        {&SswcReply::MEAS_MODE, false, false},
    };
    for (const auto& test : cases) {
        SswcReply reply;
        reply.*test.field = 1;
        MergeSwitches(std::move(reply));
        MergeSwitches({});
        const Latches latches = TakeLatches();
        EXPECT_EQ(latches.anySwitch, test.any);
        EXPECT_EQ(latches.emergency, test.emergency);
    }
}

TEST_F(StageTest, AnyOfTheSixLampValuesLatchesAChange) {
    for (std::int32_t LabrReply::*field :
         {&LabrReply::labr1, &LabrReply::labr2, &LabrReply::labr4, &LabrReply::labr5,
          &LabrReply::labr6, &LabrReply::labr7}) {
        LabrReply reply;
        reply.*field = 5;
        LabrReply same = reply;
        MergeLamps(std::move(reply));
        MergeLamps(std::move(same));
        EXPECT_EQ(Snapshot().labr.lampChanged, 1) << "an unchanged reply keeps the latch";
        const Latches latches = TakeLatches();
        EXPECT_TRUE(latches.lampChanged);
        EXPECT_FALSE(latches.anySwitch);
        EXPECT_FALSE(TakeLatches().lampChanged);
        MergeLamps({});
        TakeLatches();
    }
}

}  // namespace
