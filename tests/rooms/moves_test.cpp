#include "worker/moves.h"

#include <limits>
#include <thread>

#include "rooms/room_test.h"

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using test_support::LineTest;

namespace {

struct Notice {
    int count = 0;
    bool finished = false;
    bool error = false;
    std::int32_t cancelled = 0;
    std::intptr_t data = 0;
};

Notice notice;

void Note(bool finished, bool error, const McndReply* reply, std::intptr_t data) {
    notice = {notice.count + 1, finished, error, reply->cancelled, data};
    EXPECT_EQ(reply->replyError, 0);
    EXPECT_EQ(MoveActive.load(), 0) << "a new move may start from here";
}

class MoveTest : public LineTest {
  protected:
    MoveTest() {
        notice = {};
        MoveActive = 0;
    }
    /// An accepted move, watched.
    void Move(std::intptr_t data) {
        Answer({">MMVAL=0\r\n"});
        ASSERT_TRUE(MoveAbsolute(1, 2, 3, Note, data));
        EXPECT_EQ(MoveActive.load(), 1);
    }
};

TEST_F(MoveTest, TargetsAreScaledRoundedAndSigned) {
    constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double Infinite = std::numeric_limits<double>::infinity();
    const struct {
        double x, y, z;
        const char* request;  ///< null: refused
    } cases[] = {
        {0.001, -0.002, 0, "@MMVAL=+1000,-2000,+0\r\n"},
        {0.0, -0.0, 0.0000005, "@MMVAL=+0,+0,+1\r\n"},
        {-0.0000005, 0.0000004, 1, "@MMVAL=-1,+0,+1000000\r\n"},
        {2147.483647, -2147.483648, 0, "@MMVAL=+2147483647,-2147483648,+0\r\n"},
        {2147.483648, 0, 0, nullptr},
        {0, -2147.483649, 0, nullptr},
        {0, 0, 1e300, nullptr},
        {0, 0, NaN, nullptr},
        {Infinite, 0, 0, nullptr},
        {0, -Infinite, 0, nullptr},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.x << " " << test.y << " " << test.z);
        controller->TakeRequestLog();
        Answer({">MMVAL=0\r\n"});
        log.Take();
        MoveActive = 0;
        EXPECT_EQ(MoveAbsolute(test.x, test.y, test.z, Note, 0), test.request != nullptr);
        EXPECT_EQ(MoveActive.load(), test.request != nullptr ? 1 : 0);
        if (test.request != nullptr) {
            EXPECT_EQ(controller->RequestLog(), std::vector<std::string>{test.request});
        } else {
            EXPECT_TRUE(controller->RequestLog().empty());
            EXPECT_EQ(log.Take(), "MOVE OUT OF RANGE\n");
        }
    }
}

TEST_F(MoveTest, ReplysFormDecidesAboutTheWatch) {
    const struct {
        const char* reply;
        bool accepted;
    } cases[] = {
        {">MMVAL=0\r\n", true}, {">MMVAL=#,E3\r\n", true}, {">MMVAL=\r\n", false}, {"\n", false}};
    for (const auto& test : cases) {
        MoveActive = 0;
        Answer({test.reply});
        EXPECT_EQ(MoveAbsolute(0, 0, 0, Note, 0), test.accepted);
        EXPECT_EQ(MoveActive.load(), test.accepted ? 1 : 0);
    }
    Move(1);
    Answer({">MMVAL=\r\n", ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0\r\n"});
    EXPECT_FALSE(MoveAbsolute(0, 0, 0, Note, 2));
    TestMove();
    EXPECT_EQ(notice.data, 1) << "a move that was not accepted takes nothing over";
}

TEST_F(MoveTest, ConditionDecidesAboutTheEnd) {
    enum class End { None, Silent, Good, Bad };
    const struct {
        const char* fields;
        End end;
    } cases[] = {
        {"0,1,0,0,0,0,0,0,0,0,0,0,0", End::None},    {"0,0,1,0,0,0,0,0,0,0,0,0,0", End::None},
        {"0,0,0,1,0,0,0,0,0,0,0,0,0", End::None},    {"2,1,0,0,1,1,1,0,0,0,0,0,0", End::None},
        {"0,0,0,0,1,1,1,0,0,0,0,0,0", End::Good},    {"0,2,2,2,0,0,0,0,0,0,0,0,0", End::Good},
        {"2,0,0,0,3,1,0,0,0,0,0,0,0", End::Good},    {"1,0,0,0,1,1,1,0,0,0,0,0,0", End::Bad},
        {"1,1,1,1,0,0,0,0,0,0,0,0,0", End::Bad},     {"0,1,0,0,2,0,0,0,0,0,0,0,0", End::Bad},
        {"0,0,0,0,1,2,1,0,0,0,0,0,0", End::Bad},     {"0,0,0,0,1,1,2,0,0,0,0,0,0", End::Bad},
        {"0,0,0,0,1,1,1,1,0,0,0,0,0", End::Bad},     {"0,0,0,0,1,1,1,0,1,0,0,0,0", End::Bad},
        {"0,0,0,0,1,1,1,0,0,5,0,0,0", End::Bad},     {"0,0,0,0,1,1,1,0,0,0,2,0,0", End::Bad},
        {"0,0,0,0,1,1,1,0,0,0,0,1,0", End::Bad},     {"0,1,0,0,1,1,1,0,0,0,0,0,-1", End::Bad},
        {"#,E5,0,0,0,0,0,0,0,0,0,0,0", End::Silent}, {"0,0,0", End::Silent},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.fields);
        notice = {};
        Move(77);
        Answer({std::string(">MCND=") + test.fields + "\r\n"});
        TestMove();
        EXPECT_EQ(MoveActive.load(), test.end == End::None ? 1 : 0);
        EXPECT_EQ(notice.count, test.end == End::Good || test.end == End::Bad ? 1 : 0);
        EXPECT_EQ(notice.error, test.end == End::Bad);
        if (notice.count > 0) {
            EXPECT_TRUE(notice.finished);
            EXPECT_EQ(notice.data, 77);
        }
    }
}

TEST_F(MoveTest, ConditionIsLoggedAsItCameAndAsNumbers) {
    Move(1);
    const struct {
        const char* fields;
        const char* log;
    } cases[] = {
        {"0,1,+3,-3,abc,1,1,0,0,0,0,0,0",
         "MCND1 p0 = >MCND p1 = 0 p2 = 1 p3 = +3 p4 = -3 p5 = abc p6 = 1 p7 = 1 p8 = 0 p9 = 0 "
         "p10 = 0 p11 = 0 p12 = 0 p13 = 0\r\n\n\n"
         "MCND2 cancelled=0 x moving=1 y moving=3 z moving=-3 x result=0 y result=1 z result=1 "
         "x hw limit=0 y hw limit=0 z hw limit=0 x sw limit=0 y sw limit=0 z sw limit=0\n\n"},
        {"0,1,2,3,4,5,6,0,0,0,0,0,9,14",
         "MCND1 p0 = >MCND p1 = 0 p2 = 1 p3 = 2 p4 = 3 p5 = 4 p6 = 5 p7 = 6 p8 = 0 p9 = 0 p10 = 0 "
         "p11 = 0 p12 = 0 p13 = 9\n\n"
         "MCND2 cancelled=0 x moving=1 y moving=2 z moving=3 x result=4 y result=5 z result=6 "
         "x hw limit=0 y hw limit=0 z hw limit=0 x sw limit=0 y sw limit=0 z sw limit=9\n\n"},
        {"#,E5,0,0,0,0,0,0,0,0,0,0,0",
         "MCND1 p0 = >MCND p1 = # p2 = E5 p3 = 0 p4 = 0 p5 = 0 p6 = 0 p7 = 0 p8 = 0 p9 = 0 p10 = 0 "
         "p11 = 0 p12 = 0 p13 = 0\r\n\n\nBADCMD buf=>MCND\n"},
        {"0,1,2,3,4,5,6,0,0,0,0,0", "BADCMD buf=>MCND\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.fields);
        Answer({std::string(">MCND=") + test.fields + "\r\n"});
        log.Take();
        TestMove();
        EXPECT_EQ(log.Take(), test.log);
    }
}

TEST_F(MoveTest, OlderConditionNeverEndsANewerMove) {
    Move(1);
    const std::string ended = ">MCND=0,0,0,0,1,1,1,0,0,0,0,0,0\r\n";
    Answer({std::vector<ScriptedReply::Piece>{{300ms, ended}}, ">MMVAL=0\r\n", ended});
    // The worker is kept from looking at the reply: it has to log it first, and the log is held.
    const HANDLE logMutex = CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME"));
    WaitForSingleObject(logMutex, INFINITE);
    std::thread worker(TestMove);
    EXPECT_TRUE(controller->WaitForRequest("@MCND?\r\n", 1, 30s));
    EXPECT_TRUE(MoveAbsolute(1, 2, 3, Note, 2)) << "goes out behind the condition request";
    ReleaseMutex(logMutex);
    worker.join();
    CloseHandle(logMutex);
    EXPECT_EQ(notice.count, 0);
    EXPECT_EQ(MoveActive.load(), 1) << "the newer move is watched on";
    TestMove();
    EXPECT_EQ(notice.count, 1);
    EXPECT_EQ(notice.data, 2);
}

}  // namespace
