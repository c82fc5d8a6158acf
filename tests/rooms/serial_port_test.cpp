#include <chrono>
#include <thread>

#include "link/com_lock.h"
#include "link/exchange.h"
#include "rooms/room_test.h"
#include "settings/settings.h"

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using test_support::LineTest;
using test_support::Opening;
using test_support::RoomTest;

namespace {

std::string Partial(const std::string& chunk, std::size_t count) {
    return "ZbComRead partial \"" + chunk + "\" byte count " + std::to_string(count) + "\n";
}

const std::string ReadFailure = "ZbComRead TIMEEOUT!\nZbComOpenWriteRead read failure\n";

std::int32_t PortThatIsOpen() {
    const ComLockHold hold;
    EXPECT_EQ(ComHandle == nullptr, OpenPortNumber == -1);
    return OpenPortNumber;
}

struct ReadCase {
    const char* name;
    ScriptedReply reply;
    bool good;
    std::string text;
    std::string log;
};

void PrintTo(const ReadCase& read, std::ostream* out) {
    *out << read.name;
}

const std::string Nul(1, '\0');
const std::string Long(1000, 'x');

const ReadCase ReadCases[] = {
    {"one chunk", ">A=1\r\n", true, ">A=1\r\n", ""},
    {"no CR", ">A=1\n", true, ">A=1\n", ""},
    {"two lines in one chunk", ">A=1\r\n>B=2\r\n", true, ">A=1\r\n>B=2\r\n", ""},
    {"half lines", std::vector<ScriptedReply::Piece>{{0ms, ">CPOSMR=1"}, {500ms, ",2,3\r\n"}}, true,
     ">CPOSMR=1,2,3\r\n", Partial(">CPOSMR=1", 9)},
    {"a chunk that begins with NUL",
     std::vector<ScriptedReply::Piece>{{0ms, Nul + "ab\n"}, {500ms, ">A=1\r\n"}}, true, ">A=1\r\n",
     Partial("", 4)},
    {"a chunk with NUL inside",
     std::vector<ScriptedReply::Piece>{{0ms, ">A=" + Nul + "1\r\n"}, {500ms, "2\r\n"}}, true,
     ">A=2\r\n", Partial(">A=", 7)},
    {"bytes above 127", "\xE9\xFF\r\n", true, "\xE9\xFF\r\n", ""},
    {"silence", "", false, "", "ZbComRead timeout retry\n" + ReadFailure},
    {"text that stops short", ">A=1\r", false, ">A=1\r",
     Partial(">A=1\r", 5) + "ZbComRead timeout retry\n" + ReadFailure},
};

class ReadTest : public LineTest, public testing::WithParamInterface<ReadCase> {};

TEST_P(ReadTest, GivesTextAndLogLines) {
    Answer({GetParam().reply});
    std::string reply = "old";
    EXPECT_EQ(ExchangeLocked("@A?\r\n", reply), GetParam().good);
    EXPECT_EQ(reply, GetParam().text);
    EXPECT_EQ(log.Take(), Opening + GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(SerialPort, ReadTest, testing::ValuesIn(ReadCases));

TEST_F(LineTest, LongReplyComesWhole) {
    Answer({Long + "\r\n"});
    std::string reply;
    EXPECT_TRUE(ExchangeLocked("@A?\r\n", reply));
    EXPECT_EQ(reply, Long + "\r\n");
}

TEST_F(LineTest, EndlessStreamEndsWithinTheTimeLimitAndIsNotCollectedWithoutBound) {
    std::vector<ScriptedReply::Piece> stream(400, {5ms, std::string(1000, 'x')});
    Answer({stream});
    std::string reply;
    EXPECT_FALSE(ExchangeLocked("@A?\r\n", reply));
    EXPECT_GT(reply.size(), 1000U);
    EXPECT_LE(reply.size(), 64U * 1024U);
}

TEST_F(LineTest, SilenceLastsAsLongAsOneRead) {
    Answer({""});
    std::string reply;
    const ULONGLONG start = GetTickCount64();
    EXPECT_FALSE(ExchangeLocked("@A?\r\n", reply));
    EXPECT_GE(GetTickCount64() - start, 2650U);
}

TEST_F(LineTest, LateReplyStandsInFrontOfTheNext) {
    Answer({std::vector<ScriptedReply::Piece>{{3s, ">OLD=1\r\n"}}});
    std::string reply;
    EXPECT_FALSE(ExchangeLocked("@OLD?\r\n", reply));
    // The port keeps the late bytes; the next read finds them first.
    std::this_thread::sleep_for(1s);
    Answer({std::vector<ScriptedReply::Piece>{{100ms, ">NEW=1\r\n"}}});
    EXPECT_TRUE(ExchangeLocked("@NEW?\r\n", reply));
    EXPECT_EQ(reply, ">OLD=1\r\n");
    EXPECT_TRUE(ExchangeLocked("@NEXT?\r\n", reply));
    EXPECT_EQ(reply.substr(0, 8), ">NEW=1\r\n");
}

TEST_F(LineTest, OpensOncePerPortNumber) {
    std::string reply;
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(log.Take(), Opening);

    PortSettings settings = CurrentPortSettings();
    settings.BaudRate = 9600;
    StorePortSettings(settings);
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(log.Take(), "") << "an open port is not configured again";

    settings.Port = 77;
    StorePortSettings(settings);
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(PortThatIsOpen(), -1) << "the old port was closed first";
    settings.Port = 3;
    StorePortSettings(settings);
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
}

TEST_F(RoomTest, AbsentPortFailsWithTheSystemsText) {
    PortSettings settings = CurrentPortSettings();
    settings.Port = 77;
    StorePortSettings(settings);
    std::string reply = "old";
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(reply, "old");
    const std::string text = log.Take();
    const std::string begin = "ZbComOpen opening: \\\\.\\COM77\nZbComOpen CreateFile Error: ";
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    const std::string end = "\r\n\nZbComOpenWriteRead ERROR\n";
    ASSERT_GT(text.size(), begin.size() + end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
    EXPECT_EQ(PortThatIsOpen(), -1);
}

TEST_F(RoomTest, UnknownErrorCodeIsLoggedAsNumber) {
    LogSystemError("Prefix: ", 0x20001234);
    EXPECT_EQ(log.Take(), "Prefix: error 536875572\n");
}

TEST_F(LineTest, RefusedLineSettingsLeaveThePortOpenAndAreNotTriedAgain) {
    PortSettings settings = CurrentPortSettings();
    settings.ByteSize = 3;
    StorePortSettings(settings);
    std::string reply;
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    const std::string begin = Opening + "ZbComOpen SetCommState Error: ";
    EXPECT_EQ(log.Take().substr(0, begin.size()), begin);
    EXPECT_EQ(PortThatIsOpen(), 3);
    ExchangeLocked("@SMOD=1\r\n", reply);  // Comes back, whatever it reads.
    const ComLockHold hold;
    EXPECT_EQ(ZbComOpen(), 1);
}

TEST_F(LineTest, CloseDuringAnExchangeWaitsForItsEndAndNotForTheCaller) {
    Answer({std::vector<ScriptedReply::Piece>{{600ms, ">A=1\r\n"}}});
    bool good = false;
    std::thread exchange([&] {
        std::string reply;
        good = ExchangeLocked("@A?\r\n", reply);
    });
    ASSERT_TRUE(controller->WaitForRequest("@A?\r\n", 1, 30s));
    ClosePortWhenFree();
    exchange.join();
    EXPECT_TRUE(good) << "the port was pulled from under the exchange";
    EXPECT_EQ(PortThatIsOpen(), -1);
    ClosePortWhenFree();
}

}  // namespace
