#include <algorithm>

#include "link/com_lock.h"
#include "link/exchange.h"
#include "rooms/room_test.h"
#include "settings/settings.h"

using test_support::RoomTest;

namespace {

/// Opens, and is no serial line.
constexpr std::int32_t PortWithoutLine = 12;

TEST_F(RoomTest, PortThatIsNoSerialLineIsNotWrittenTo) {
    PortSettings settings = CurrentPortSettings();
    settings.Port = PortWithoutLine;
    StorePortSettings(settings);
    std::string reply = "old";
    EXPECT_FALSE(ExchangeLocked("@SMOD=1\r\n", reply));
    EXPECT_EQ(reply, "old");
    const std::string text = log.Take();
    const std::string begin = "ZbComOpen opening: \\\\.\\COM12\nZbComOpen GetCommState Error: ";
    EXPECT_EQ(text.substr(0, begin.size()), begin);
    EXPECT_TRUE(text.ends_with("\r\n\nZbComOpenWriteRead ERROR\n")) << text;
    EXPECT_EQ(text.find("SetComm"), text.npos) << text;
    const ComLockHold hold;
    EXPECT_EQ(OpenPortNumber, PortWithoutLine);
}

}  // namespace
