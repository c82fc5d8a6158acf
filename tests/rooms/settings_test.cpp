#include "settings/settings.h"

#include "rooms/room_test.h"
#include "support/machine.h"

using test_support::RemoveSettings;
using test_support::RoomTest;
using test_support::WriteSettings;

namespace {

TEST_F(RoomTest, MissingFileGivesTheDefaults) {
    const PortSettings port = CurrentPortSettings();
    EXPECT_EQ(port.Port, 3);
    EXPECT_EQ(port.BaudRate, 38400U);
    EXPECT_EQ(port.ByteSize, 8U);
    EXPECT_EQ(port.Parity, 0U);
    EXPECT_EQ(port.StopBits, 0U);
    EXPECT_EQ(Delay, 10);
    EXPECT_EQ(ReadCommandPoll(), 80U);
    EXPECT_EQ(SerialLogEnabled.load(), 0);
    EXPECT_EQ(ScaleFactor.load(), 100.0);
}

TEST_F(RoomTest, EveryKeyIsRead) {
    WriteSettings(
        "[Other]\r\nPort=9\r\n[Ovisk]\r\nPort=-4\r\nBaudRate=9600\r\nByteSize=7\r\nParity=2\r\n"
        "StopBits=2\r\nDelay=25\r\nCmdPoll=0\r\nSerialLog=1\r\nScaleFactor=250.5\r\n");
    ReadSettingsAtLoad();
    const PortSettings port = CurrentPortSettings();
    EXPECT_EQ(port.Port, -4);
    EXPECT_EQ(port.BaudRate, 9600U);
    EXPECT_EQ(port.ByteSize, 7U);
    EXPECT_EQ(port.Parity, 2U);
    EXPECT_EQ(port.StopBits, 2U);
    EXPECT_EQ(Delay, 25);
    EXPECT_EQ(ReadCommandPoll(), 0U);
    EXPECT_EQ(SerialLogEnabled.load(), 1);
    EXPECT_EQ(ScaleFactor.load(), 250.5);
}

TEST_F(RoomTest, ReloadFollowsTheFile) {
    const struct {
        const char* lines;
        int serialLog;
        double scaleFactor;
    } cases[] = {
        {"SerialLog=1\nScaleFactor=10", 1, 10.0},
        {"SerialLog=2", 0, 100.0},
        {"SerialLog=-1\nScaleFactor=", 0, 100.0},
        {"SerialLog=\nScaleFactor=-2", 0, -2.0},
        {"SerialLog=1x\nScaleFactor=1e3mm", 1, 1000.0},
        {"SerialLog=no\nScaleFactor=0", 0, 100.0},
        {"ScaleFactor=senseless", 0, 100.0},
        {"ScaleFactor=inf", 0, 100.0},
        {"ScaleFactor=1e999", 0, 100.0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.lines);
        WriteSettings("[Ovisk]\nPort=9\n" + std::string(test.lines) + "\n");
        ReloadSettings();
        EXPECT_EQ(SerialLogEnabled.load(), test.serialLog);
        EXPECT_EQ(ScaleFactor.load(), test.scaleFactor);
        EXPECT_EQ(CurrentPortSettings().Port, 3) << "the port is not read again";
    }
    RemoveSettings();
    ReloadSettings();
    EXPECT_EQ(SerialLogEnabled.load(), 0);
    EXPECT_EQ(ScaleFactor.load(), 100.0);
}

}  // namespace
