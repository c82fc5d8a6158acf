#include "link/protocol.h"

#include "rooms/room_test.h"
#include "settings/settings.h"

using test_support::LineTest;
using test_support::Opening;

namespace {

TEST_F(LineTest, ReplyFormDecides) {
    const struct {
        std::string reply;
        bool good;
    } cases[] = {
        {">A=1\r\n", true},
        {">A=\r\n", false},                               // nothing between prefix and line end
        {">A=#,E1\r\n", true},                            // a refusal has the right form
        {">A=1\n", false},                                // no CR
        {">A=1\r\nx\n", false},                           // text behind the line end
        {">A=1\r\n>B=2\r\n", true},                       // two replies run together
        {">B=1\r\n", false},                              // another request's reply
        {"x>A=1\r\n", false},                             // a stale byte in front
        {"A=1\r\n", false},                               // no start mark
        {"\r\n", false},                                  // an empty line
        {">A=" + std::string(250, '1') + "\r\n", true},   // 255 characters fit
        {">A=" + std::string(251, '1') + "\r\n", false},  // 256 do not
        {">A=" + std::string(2000, '1') + "\r\n", false},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.reply);
        Answer({test.reply});
        ExchangeReplyBuffer buffer{};
        EXPECT_EQ(ExchangeChecked("@A?\r\n", ">A=", buffer), test.good);
        const std::string expected = test.reply.substr(0, 255);
        EXPECT_EQ(std::string(buffer.data()), expected);
        if (!test.good && test.reply.size() < 256) {
            EXPECT_TRUE(log.WaitFor("BADCMD1 send=@A?\r\n receive=" + test.reply + "\n"));
        }
    }
}

TEST_F(LineTest, NoReplyLeavesTheBufferAlone) {
    Answer({""});
    ExchangeReplyBuffer buffer{'k', 'e', 'p', 't'};
    EXPECT_FALSE(ExchangeChecked("@A?\r\n", ">A=", buffer));
    EXPECT_STREQ(buffer.data(), "kept");
    EXPECT_EQ(log.Take(), Opening +
                              "ZbComRead timeout retry\nZbComRead TIMEEOUT!\n"
                              "ZbComOpenWriteRead read failure\nBADCMD2 send=@A?\r\n\n");
}

TEST_F(LineTest, GoodExchangeIsLoggedWithItsTime) {
    SerialLogEnabled = 1;
    Answer({">A=1\r\n"});
    ExchangeReplyBuffer buffer{};
    EXPECT_TRUE(ExchangeChecked("@A?\r\n", ">A=", buffer));
    const std::string text = log.Take();
    const std::string begin = Opening +
                              "ZbComWrite: @A?\r\n\nZbComRead: >A=1\r\n\nReply: >A=1\r\n\n"
                              "GOODCMD send=@A?\r\n receive=>A=1\r\n dt=";
    ASSERT_EQ(text.substr(0, begin.size()), begin);
    const int elapsed = std::stoi(text.substr(begin.size()));
    EXPECT_GE(elapsed, 28);
    EXPECT_LT(elapsed, 30000);
    EXPECT_EQ(text.back(), '\n');
}

}  // namespace
