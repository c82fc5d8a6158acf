#include <array>
#include <atomic>

#include "module/reopen_test.h"

// With `Reopen` the module mends a lost line by itself.

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using simulator::StageModel;
using test_support::ClockJumps;
using test_support::Eventually;
using test_support::IsAbout;
using test_support::milliseconds;
using test_support::Pause;
using test_support::ReopenSettings;
using test_support::ReopenTest;
using test_support::TimeOf;
using test_support::TimesAreExact;
using test_support::WrongReply;

namespace {

TEST_F(ReopenTest, PulledCableComesBackByItself) {
    StartOnLine();
    EXPECT_EQ(Health().linkLosses, 0U);
    LoseLine();
    EXPECT_EQ(Health().link, ZBOVISK_LINK_LOST);
    EXPECT_EQ(Health().linkLosses, 1U);
    EXPECT_EQ(Snapshot().cposmr.x, 1) << "the last good values stay";
    Line()->With([](StageModel& stage) { stage.Place({400, 500, 600}); });
    Pause(2s);
    PlugCable();
    ExpectReturn();
    EXPECT_EQ(Snapshot().cposmr.x, 4) << "known as soon as the line is back";
    ASSERT_TRUE(Line()->WaitForRequest("@SSWC?\r\n", 1, 30s));
    const std::vector<std::string> requests = Line()->RequestLog();
    EXPECT_EQ(requests[0], "@SMOD=1\r\n");
    EXPECT_EQ(requests[1], "@CPOSMR?\r\n");
    EXPECT_EQ(Sent("@SMOD").size(), 1U);
    EXPECT_EQ(Logged("LINE LOST\n"), 1U);
    EXPECT_EQ(Logged("LINE IS BACK\n"), 1U);
    EXPECT_EQ(Health().linkLosses, 1U);
}

TEST_F(ReopenTest, TriesComeAfterTwiceThePauseEachTime) {
    if (!TimesAreExact()) {
        GTEST_SKIP() << "the times have to be exact";
    }
    StartOnLine();
    const struct {
        bool silent;
        std::array<int, 7> expected;
    } cases[] = {
        {false, {500, 1000, 2000, 4000, 8000, 8000, 8000}},
        // A try at a silent line takes 2650 ms itself.
        {true, {500, 2651, 2651, 4000, 8000, 8000, 8000}},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.silent);
        if (test.silent) {
            Answer({{"@", ""}});
        } else {
            PullCable();
        }
        ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
        const std::vector<milliseconds> times = TimesOfTries(test.expected.size());
        for (std::size_t i = 0; i < times.size(); ++i) {
            EXPECT_TRUE(IsAbout(times[i], milliseconds(test.expected[i])))
                << i << ": " << times[i].count();
        }
        Answer({});
        PlugCable();
        ExpectReturn();
        log.Take();
    }
}

TEST_F(ReopenTest, PortIsClosedBetweenTheTries) {
    StartOnLine();
    Answer({{"@", WrongReply}});
    ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
    ASSERT_TRUE(Eventually([this] { return Logged("ZbComOpen opening") >= 4; }));
    ASSERT_TRUE(Eventually([] {
        const HANDLE port = CreateFileA(R"(\\.\COM3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        return port != INVALID_HANDLE_VALUE && CloseHandle(port) != FALSE;
    }));
    Answer({});
    ExpectReturn();
}

TEST_F(ReopenTest, ThreeExchangesInARowWithoutAGoodReplyLoseTheLine) {
    StartOnLine();
    const auto answer =
        [asked = std::size_t{0}](const std::string&) mutable -> std::optional<ScriptedReply> {
        constexpr std::array Pattern{'w', 'w', 'g', 'w', 'w', 'g', 'w', 'w', 'w'};
        const std::size_t next = asked++;
        return next < Pattern.size() && Pattern[next] != 'g'
                   ? std::optional<ScriptedReply>(WrongReply)
                   : std::nullopt;
    };
    Line()->SetScript(answer);
    ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
    EXPECT_EQ(Health().exchangesFailed, 7U);
    ExpectReturn();
    EXPECT_EQ(Health().exchangesFailed, 7U);
    EXPECT_EQ(Health().linkLosses, 1U);
}

TEST_F(ReopenTest, ReturnTakesRemoteModeAndPosition) {
    StartOnLine();
    Answer({{"@", WrongReply}});
    ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
    const struct {
        Answers answers;
        const char* seen;
        const char* notSeen;
    } cases[] = {
        {{{"@SMOD", ""}}, "@SMOD=1\r\n", "@CPOSMR?\r\n"},
        {{{"@CPOSMR", WrongReply}}, "@CPOSMR?\r\n", "@SSWC?\r\n"},
        {{{"@CPOSMR", ">CPOSMR=#,E1\r\n"}}, "@CPOSMR?\r\n", "@SSWC?\r\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.answers[0].second);
        Answer(test.answers);
        Pause(3s);
        Line()->TakeRequestLog();
        EXPECT_TRUE(Line()->WaitForRequest(test.seen, 2, 60s));
        EXPECT_EQ(Sent(test.notSeen).size(), 0U);
        EXPECT_EQ(Health().link, ZBOVISK_LINK_LOST);
    }
    Answer({});
    ExpectReturn();
}

TEST_F(ReopenTest, PortThatComesAfterTheStartIsFound) {
    if (!ClockJumps()) {
        GTEST_SKIP() << "the port has to appear";
    }
    Load(ReopenSettings);
    Start();
    ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
    EXPECT_STREQ(Health().lastFailure, "@CPOSMR?: the port could not be opened");
    EXPECT_EQ(Health().exchangesFailed, 3U) << "that of the start is one of them";
    controller = &PlugIn();
    Line()->With([](StageModel& stage) { stage.Place({100, 200, 300}); });
    EXPECT_TRUE(SeesPosition(1, 2, 3));
    EXPECT_EQ(Logged("LINE IS BACK\n"), 1U);
}

TEST_F(ReopenTest, MovesAreRefusedWhileLostAndLampsWait) {
    StartOnLine();
    Module().ZbOvisk_SetLight(3, 0);
    ASSERT_TRUE(Line()->WaitForRequest("@LBRT3=0\r\n", 1, 30s));
    LoseLine();
    EXPECT_TRUE(IsAbout(TimeOf([this] { EXPECT_FALSE(Move()); }), 0ms));
    EXPECT_EQ(Logged("MOVE REFUSED, LINE LOST\n"), 1U);
    for (int value = 0; value < 255; ++value) {
        EXPECT_TRUE(Module().ZbOvisk_SetLight(1, value));
        EXPECT_TRUE(Module().ZbOvisk_SetLight(2, 255 - value));
    }
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 255));
    EXPECT_EQ(Health().movesAccepted, 0U);
    PlugCable();
    ExpectReturn();
    ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 2, 30s));
    EXPECT_EQ(Sent("@LBRT"), (std::vector<std::string>{"@LBRT1=10000\r\n", "@LBRT2=39\r\n"}));
    EXPECT_EQ(Sent("@MMVAL").size(), 0U);
    EXPECT_TRUE(Move());
}

TEST_F(ReopenTest, LampWhoseOwnExchangeLosesTheLineIsSentAgain) {
    if (!ClockJumps()) {
        GTEST_SKIP() << "the worker has to be at rest, and the port to go";
    }
    StartOnLine("CmdPoll=2000\nReopen=1\n");
    PullCable();
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 100));
    EXPECT_TRUE(log.WaitFor("LINE LOST\n"));
    EXPECT_STREQ(Health().lastFailure, "@LBRT1=3922: the request could not be written");
    EXPECT_TRUE(Module().ZbOvisk_SetLight(2, 255));
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 255));
    PlugCable();
    ExpectReturn();
    ASSERT_TRUE(Line()->WaitForRequest("@CPOSMR?\r\n", 3, 30s));
    EXPECT_EQ(Sent("@LBRT"), (std::vector<std::string>{"@LBRT1=10000\r\n", "@LBRT2=10000\r\n"}));
}

TEST_F(ReopenTest, WatchedMoveIsToldOnceAsEndedWithAnError) {
    StartOnLine();
    static std::atomic<int> told;
    static std::atomic<bool> errorTold;
    told = 0;
    const auto callback = [](bool finished, bool error, const McndReply* reply, std::intptr_t) {
        errorTold = finished && error && reply != nullptr;
        ++told;
    };
    Answer({{"@MCND", ">MCND=0,1,0,0,0,0,0,0,0,0,0,0,0\r\n"}});
    ASSERT_TRUE(Move(callback));
    LoseLine();
    EXPECT_TRUE(Eventually([] { return told != 0; }));
    EXPECT_TRUE(errorTold);
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_ENDED_WITH_ERROR);
    PlugCable();
    ExpectReturn();
    ASSERT_TRUE(Line()->WaitForRequest("@LABR?\r\n", 3, 30s));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(Sent("@MCND").size(), 0U) << "nobody watches any more";

    Answer({{"@MCND", WrongReply}});
    ASSERT_TRUE(Move(callback));
    ASSERT_TRUE(Line()->WaitForRequest("@MCND?\r\n", 2, 30s)) << "one bad answer is no end";
    Answer({{"@MCND", ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0\r\n"}});
    EXPECT_TRUE(Eventually([] { return told == 2; }));
    EXPECT_FALSE(errorTold);
    EXPECT_EQ(Health().move, ZBOVISK_MOVE_ENDED_WELL);
}

TEST_F(ReopenTest, StopWhileLostIsBoundedAndTheLast) {
    for (const bool silent : {false, true}) {
        SCOPED_TRACE(silent);
        StartOnLine();
        EXPECT_TRUE(Module().ZbOvisk_SetLight(4, 0));
        if (silent) {
            Answer({{"@", ""}});
            ASSERT_TRUE(log.WaitFor("LINE LOST\n"));
            Line()->TakeRequestLog();
            ASSERT_TRUE(Line()->WaitForRequest("@SMOD=1\r\n", 1, 30s)) << "a try is under way";
        } else {
            LoseLine();
        }
        EXPECT_TRUE(Module().ZbOvisk_SetLight(4, 255));
        const milliseconds took = TimeOf([this] { Stop(); });
        EXPECT_LT(took, TimesAreExact() && !silent ? 100ms : 5000ms) << took.count();
        Line()->TakeRequestLog();
        Answer({});
        PlugCable();
        Pause(TimesAreExact() ? 60s : 4s);
        EXPECT_EQ(Line()->RequestLog(), std::vector<std::string>{});
        Unload();
        log.Take();
    }
}

TEST_F(ReopenTest, RepliesRunTogetherAndLateOnesChangeNothingIfStrict) {
    StartOnLine("CmdPoll=300\nStrictReplies=1\n");
    const std::string joined = ">CPOSMR=1392525,9669>CPOSMR=1408025,966929,878952\r\n";
    Answer({{"@CPOSMR", joined}});
    EXPECT_TRUE(log.WaitFor("BADCMD1 send=@CPOSMR?\r\n receive=" + joined));
    EXPECT_EQ(Stage().xCounts, 100);
    EXPECT_EQ(Stage().yCounts, 200);
    // Each reply comes twice, the second time when the host has read the first.
    Line()->SetScript([](const std::string& asked) -> std::optional<ScriptedReply> {
        if (!asked.starts_with("@CPOSMR")) {
            return std::nullopt;
        }
        using Piece = ScriptedReply::Piece;
        return std::vector<Piece>{{0ms, ">CPOSMR=100,200,300\r\n"}, {45ms, ">CPOSMR=7,7,7\r\n"}};
    });
    EXPECT_TRUE(log.WaitFor("LATE REPLY DROPPED >CPOSMR=7,7,7\r\n\n"));
    EXPECT_TRUE(Eventually([this] {
        return std::string(Health().lastFailure).ends_with(": a late reply was waiting");
    }));
    EXPECT_EQ(Stage().xCounts, 100);
    Answer({});
    Line()->With([](StageModel& stage) { stage.Place({400, 500, 600}); });
    EXPECT_TRUE(SeesPosition(4, 5, 6));
    EXPECT_EQ(Health().linkLosses, 0U) << "without Reopen nothing is ever lost";
}

}  // namespace
