#include "link/exchange.h"

#include "rooms/room_test.h"
#include "settings/settings.h"

using test_support::LineTest;
using test_support::Opening;
using test_support::RoomTest;

namespace {

TEST_F(RoomTest, NegativePortTouchesNothing) {
    PortSettings settings = CurrentPortSettings();
    settings.Port = -1;
    StorePortSettings(settings);
    std::string reply = "old";
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(reply, "old");
    EXPECT_EQ(log.Take(), "ZbComOpenWriteRead BAD PORT\n");
}

TEST_F(LineTest, ChattyLinesComeOnlyWithTheSerialLogOn) {
    std::string reply;
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(log.Take(), Opening);
    SerialLogEnabled = 1;
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(log.Take(), "ZbComWrite: @SMOD=1\r\n\nZbComRead: >SMOD=1\r\n\nReply: >SMOD=1\r\n\n");
}

TEST_F(RoomTest, FailedOpeningMakesTheNextExchangeWaitOutTheDelay) {
    PortSettings settings = CurrentPortSettings();
    settings.Port = 77;
    StorePortSettings(settings);
    std::string reply;
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    const ULONGLONG failure = GetTickCount64();

    test_support::SimulatedController controller;
    settings.Port = 3;
    StorePortSettings(settings);
    Delay = 400;
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_GE(GetTickCount64() - failure, 2U * 400U - 50U) << "once before writing, once after";
    const ULONGLONG second = GetTickCount64();
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_GE(GetTickCount64() - second, 400U);
}

TEST_F(LineTest, NegativeDelayCountsAsZero) {
    Delay = -5;
    std::string reply;
    EXPECT_TRUE(ExchangeLocked("@SMOD=1\r\n", reply));
}

TEST_F(LineTest, RemoteEnableDropsAnyReply) {
    Answer({"nonsense\n"});
    EXPECT_EQ(MyRemoteEnable(), 1);
    EXPECT_EQ(controller->RequestLog(), std::vector<std::string>{"@SMOD=1\r\n"});
}

}  // namespace
