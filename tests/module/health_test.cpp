#include <array>
#include <atomic>
#include <cstring>

#include "module/module_test.h"

// What the two plain exports tell.

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using test_support::Eventually;
using test_support::IsAbout;
using test_support::milliseconds;
using test_support::ModuleTest;
using test_support::Now;
using test_support::Pause;
using test_support::SimulatedController;

namespace {

class HealthTest : public ModuleTest {
  protected:
    void StartOnLine(const std::string& settings) {
        line_ = &PlugIn();
        Load(settings);
        Start();
    }
    SimulatedController& Line() { return *line_; }

    /// From now on requests that begin so get these replies, an empty one being none at all.
    void Answer(const std::vector<std::pair<std::string, std::string>>& replies) {
        Line()->SetScript([replies](const std::string& asked) -> std::optional<ScriptedReply> {
            for (const auto& [request, reply] : replies) {
                if (asked.starts_with(request)) {
                    return reply;
                }
            }
            return std::nullopt;
        });
    }
    bool Move(double x) {
        return Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(x, -0.5, 0, nullptr, 0);
    }

    SimulatedController* line_ = nullptr;
};

bool IsKnown(const ZbOviskHealth& health) {
    return health.positionAge != ZBOVISK_NEVER && health.switchesAge != ZBOVISK_NEVER &&
           health.lampsAge != ZBOVISK_NEVER;
}

TEST_F(HealthTest, NothingHasBeenBeforeTheStart) {
    Load("Port=7\nScaleFactor=250\n");
    const ZbOviskHealth health = Health();
    EXPECT_EQ(health.version, 10000U);
    EXPECT_EQ(health.worker, ZBOVISK_WORKER_NOT_STARTED);
    EXPECT_EQ(health.scaleFactor, 250);
    EXPECT_EQ(health.port, 7);
    EXPECT_EQ(health.link, ZBOVISK_LINK_NEVER_ANSWERED);
    EXPECT_STREQ(health.lastFailure, "");
    for (const std::uint64_t age :
         {health.millisecondsSinceGood, health.positionAge, health.switchesAge, health.lampsAge}) {
        EXPECT_EQ(age, ZBOVISK_NEVER);
    }
    EXPECT_EQ(health.move, ZBOVISK_MOVE_NONE);
    EXPECT_EQ(health.lastHoming, ZBOVISK_HOMING_END_NONE);
}

template <typename Record>
void ExpectRefusedWhole(bool (*read)(Record*)) {
    EXPECT_FALSE(read(nullptr));
    for (const std::size_t size : {std::size_t{0}, sizeof(Record) - 1, sizeof(Record) + 1}) {
        Record record;
        std::memset(&record, 0xA5, sizeof record);
        record.size = static_cast<std::uint32_t>(size);
        const Record before = record;
        EXPECT_FALSE(read(&record));
        EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << size;
    }
}

TEST_F(HealthTest, RecordOfAnotherSizeIsRefusedWhole) {
    Load();
    ExpectRefusedWhole(Module().ZbOvisk_ReadStage);
    ExpectRefusedWhole(Module().ZbOvisk_ReadHealth);
}

TEST_F(HealthTest, AgesGrowWhileNothingComes) {
    StartOnLine("CmdPoll=20\n");
    ASSERT_TRUE(Eventually([this] { return IsKnown(Health()); }));
    const std::uint64_t good = Health().exchangesGood;
    ASSERT_TRUE(Eventually([&] { return Health().exchangesGood > good; }));
    EXPECT_TRUE(IsAbout(milliseconds(Health().millisecondsSinceGood), 0ms));
    Answer({{"@", ""}});
    ASSERT_TRUE(Eventually([this] { return Health().failuresInRow == 1; }));
    const ZbOviskHealth first = Health();
    const milliseconds start = Now();
    EXPECT_EQ(first.link, ZBOVISK_LINK_FAILS);
    EXPECT_GE(first.millisecondsSinceGood, 2600U) << "what the failed read has taken";
    Pause(10s);
    const ZbOviskHealth later = Health();
    const milliseconds passed = Now() - start;
    const auto ages = [](const ZbOviskHealth& one) {
        return std::array{one.millisecondsSinceGood, one.positionAge, one.switchesAge,
                          one.lampsAge};
    };
    for (std::size_t i = 0; i < ages(first).size(); ++i) {
        EXPECT_TRUE(IsAbout(milliseconds(ages(later)[i] - ages(first)[i]), passed)) << i;
    }
    EXPECT_EQ(later.failuresInRow, later.exchangesFailed);
    EXPECT_GT(later.failuresInRow, 2U);
    EXPECT_EQ(later.exchangesGood, first.exchangesGood);
}

TEST_F(HealthTest, LinkIsAsItsLastExchange) {
    line_ = &PlugIn();
    Answer({{"@", ""}});
    Load("CmdPoll=20\n");
    Start();
    EXPECT_EQ(Health().link, ZBOVISK_LINK_NEVER_ANSWERED);
    EXPECT_STREQ(Health().lastFailure, "@SMOD=1: no reply");
    EXPECT_EQ(Health().exchangesFailed, 1U);
    const struct {
        const char* request;
        const char* reply;
        std::int32_t link;
        const char* failure;
    } cases[] = {
        {"none", "", ZBOVISK_LINK_ANSWERS, ": no reply"},
        {"@", ">NO=1,2,3\r\n", ZBOVISK_LINK_FAILS, ": a reply of the wrong form"},
        {"@", "half a line", ZBOVISK_LINK_FAILS, ": no reply"},
        {"@CPOSMR", ">CPOSMR=#,E1,0\r\n", ZBOVISK_LINK_ANSWERS, ": no reply"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.reply);
        Answer({{test.request, test.reply}});
        EXPECT_TRUE(Eventually([&] {
            const ZbOviskHealth health = Health();
            EXPECT_EQ(health.failuresInRow == 0, health.link == ZBOVISK_LINK_ANSWERS);
            return IsKnown(health) && health.link == test.link &&
                   std::string(health.lastFailure).ends_with(test.failure);
        }));
    }
    EXPECT_TRUE(Eventually([this] {
        const ZbOviskHealth health = Health();
        return health.switchesAge < 1000 && health.positionAge > 2600;
    })) << "a refused query brings no position";
}

TEST_F(HealthTest, EveryExchangeIsCounted) {
    StartOnLine("CmdPoll=2000\n");
    ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 1, 30s));
    Answer({{"@LABR", ">NO=1\r\n"}});
    ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 3, 30s));
    EXPECT_TRUE(Eventually([this] {
        const ZbOviskHealth health = Health();
        return health.exchangesFailed == 2 &&
               health.exchangesGood + 2 == Line()->RequestLog().size();
    }));
}

TEST_F(HealthTest, PortThatDoesNotExistIsToldAsSuch) {
    Load("Port=-1\n");
    Start();
    EXPECT_STREQ(Health().lastFailure, "@SMOD=1: the port's number is negative");
    EXPECT_EQ(Health().port, -1);
}

TEST_F(HealthTest, WorkerIsSeenToStop) {
    StartOnLine("CmdPoll=20\n");
    EXPECT_EQ(Health().worker, ZBOVISK_WORKER_RUNS);
    Stop();
    EXPECT_EQ(Health().worker, ZBOVISK_WORKER_STOPPED);
    EXPECT_TRUE(Move(0.01)) << "the host's own calls open the port again";
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_LOST) << "nobody will ever look";
    EXPECT_EQ(Health().movesEnded, 1U);
}

TEST_F(HealthTest, WorkerIsSeenToEndAndItsMoveToBeLost) {
    StartOnLine("CmdPoll=20\n");
    const auto fail = [](bool, bool, const McndReply*, std::intptr_t) { throw 1; };
    EXPECT_TRUE(Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, fail, 0));
    EXPECT_TRUE(Eventually([this] { return Health().worker == ZBOVISK_WORKER_ENDED; }));
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_ENDED_WELL);
    EXPECT_TRUE(Move(0.02));
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_LOST);
}

TEST_F(HealthTest, MovesAreFollowed) {
    const std::string good = ">MMVAL=0\r\n";
    const std::string arrived = ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0\r\n";
    const std::string cancelled = ">MCND=1,0,0,0,1,1,1,0,0,0,0,0,0\r\n";
    const std::string moving = ">MCND=0,1,0,0,0,0,0,0,0,0,0,0,0\r\n";
    const struct {
        std::string reply;
        std::string condition;
        std::int32_t state;
        std::int32_t asPrevious;
        const char* text;
    } cases[] = {
        {good, arrived, ZBOVISK_MOVE_ENDED_WELL, ZBOVISK_MOVE_ENDED_WELL, ""},
        {good, cancelled, ZBOVISK_MOVE_ENDED_WITH_ERROR, ZBOVISK_MOVE_ENDED_WITH_ERROR, ""},
        {">MMVAL=#,E3\r\n", arrived, ZBOVISK_MOVE_REFUSED, ZBOVISK_MOVE_REFUSED, "E3"},
        {good, ">MCND=#,E1\r\n", ZBOVISK_MOVE_LOST, ZBOVISK_MOVE_LOST, ""},
        {good, moving, ZBOVISK_MOVE_UNDER_WAY, ZBOVISK_MOVE_REPLACED, ""},
        {">MMVAL=#\r\n", moving, ZBOVISK_MOVE_REFUSED, ZBOVISK_MOVE_REFUSED, ""},
        {">MMVAL=#,0123456789012345678901234567890123\r\n", arrived, ZBOVISK_MOVE_REFUSED,
         ZBOVISK_MOVE_REFUSED, "0123456789012345678901234567890"},
        {good, moving, ZBOVISK_MOVE_UNDER_WAY, ZBOVISK_MOVE_UNDER_WAY, ""},
    };
    StartOnLine("CmdPoll=20\n");
    std::uint64_t accepted = 0;
    std::int32_t previous = ZBOVISK_MOVE_NONE;
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.reply << test.condition);
        Answer({{"@MMVAL", test.reply}, {"@MCND", test.condition}});
        ++accepted;
        EXPECT_TRUE(Move(0.001 * static_cast<double>(accepted)));
        Line()->TakeRequestLog();
        ASSERT_TRUE(Line()->WaitForRequest("@MCND?\r\n", 1, 30s));
        EXPECT_TRUE(Eventually([&] { return Health().move == test.state; }));
        const ZbOviskHealth health = Health();
        EXPECT_EQ(health.movesAccepted, accepted);
        EXPECT_EQ(health.movesEnded, accepted - (test.state == ZBOVISK_MOVE_UNDER_WAY ? 1 : 0));
        EXPECT_EQ(health.previousMove, previous);
        EXPECT_EQ(health.moveTarget[0], static_cast<std::int32_t>(accepted) * 1000);
        EXPECT_EQ(health.moveTarget[1], -500'000);
        EXPECT_STREQ(health.moveText, test.text);
        previous = test.asPrevious;
    }
    EXPECT_FALSE(Move(3000)) << "out of range";
    Answer({{"@MMVAL", ""}, {"@MCND", moving}});
    EXPECT_FALSE(Move(0.5)) << "no answer";
    EXPECT_EQ(Health().movesAccepted, accepted);
    EXPECT_EQ(Health().moveTarget[0], static_cast<std::int32_t>(accepted) * 1000);
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_UNDER_WAY);
    Stop();
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_LOST);
    EXPECT_EQ(Health().movesEnded, accepted);
}

TEST_F(HealthTest, StageIsReadWhole) {
    line_ = &PlugIn();
    Answer({{"@CPOSMR", ">CPOSMR=25050,E" + std::string(40, '7') + ",-14950\r\n"},
            {"@SSWC", ">SSWC=1,102,0,104,1,106,107,108,109,110,111,0,113,114,115,116\r\n"},
            {"@LABR", ">LABR=11,12,13,14,15,16,17\r\n"}});
    Load();
    Start();
    ASSERT_TRUE(Eventually([this] { return IsKnown(Health()); }));
    ZbOviskStage stage = Stage();
    EXPECT_EQ(stage.x, 251);
    EXPECT_EQ(stage.z, -150);
    EXPECT_EQ(stage.xCounts, 25050);
    EXPECT_EQ(stage.zCounts, -14950);
    EXPECT_TRUE(stage.yError && !stage.xError && !stage.zError);
    EXPECT_EQ(stage.yErrorText, "E" + std::string(30, '7'));
    EXPECT_STREQ(stage.xErrorText, "");
    EXPECT_TRUE(stage.lampChanged);
    EXPECT_EQ(
        std::vector(std::begin(stage.switches), std::end(stage.switches)),
        (std::vector{1, 102, 0, 104, 1, 106, 107, 108, 109, 110, 111, 0, 113, 114, 115, 116}));
    EXPECT_EQ(std::vector(std::begin(stage.lamps), std::end(stage.lamps)),
              (std::vector{11, 12, 0, 14, 15, 16, 17}));

    Answer({{"@SSWC", ">SSWC=0,2,0,4,0,6,7,8,9,10,11,0,13,14,15,16\r\n"}, {"@LABR", ""}});
    EXPECT_TRUE(Eventually([this] { return Stage().switches[1] == 2; }));
    EXPECT_EQ(Stage().switches[4], 1) << "a latch";
    bool any, emergency, lamps;
    EXPECT_TRUE(Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps));
    stage = Stage();
    EXPECT_TRUE(stage.switches[0] == 0 && stage.switches[4] == 0 && !stage.lampChanged);
}

TEST_F(HealthTest, OneReadingIsOneMoment) {
    StartOnLine("CmdPoll=1\nDelay=0\n");
    Line()->SetScript([count = 0](const std::string& asked) mutable {
        return asked.starts_with("@M") || ++count % 3 != 0
                   ? std::nullopt
                   : std::optional<ScriptedReply>(">NO=1\r\n");
    });
    std::atomic<bool> stop{false};
    test_support::Thread mover([&] {
        for (int i = 0; !stop; ++i) {
            Move(0.0001 * (i % 10));
        }
    });
    ZbOviskHealth before = Health();
    EXPECT_TRUE(Eventually([&] {
        const ZbOviskHealth now = Health();
        EXPECT_EQ(now.link == ZBOVISK_LINK_FAILS, now.exchangesGood != 0 && now.failuresInRow != 0);
        EXPECT_EQ(now.exchangesFailed == 0, now.lastFailure[0] == 0);
        EXPECT_LE(now.failuresInRow, now.exchangesFailed);
        EXPECT_GE(now.exchangesGood, before.exchangesGood);
        EXPECT_EQ(now.movesAccepted - now.movesEnded, now.move == ZBOVISK_MOVE_UNDER_WAY ? 1U : 0U);
        before = now;
        return now.movesEnded >= 50 && now.exchangesFailed >= 20;
    }));
    stop = true;
}

}  // namespace
