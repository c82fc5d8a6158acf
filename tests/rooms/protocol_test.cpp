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
        bool goodIfStrict;
    } cases[] = {
        {">A=1\r\n", true, true},
        {">A=\r\n", false, false},          // nothing between prefix and line end
        {">A=#,E1\r\n", true, true},        // a refusal has the right form
        {">A=1\n", false, false},           // no CR
        {">A=1\r\nx\n", false, false},      // text behind the line end
        {">A=1\r\n>B=2\r\n", true, false},  // two replies, one after the other,
        {">A=1>A=2\r\n", true, false},      // the first without its line end,
        {">A=1\r\n2\r\n", true, false},     // the second without its beginning
        {">A=1\n\r\n", true, false},        // a spoilt byte that became a line-feed
        {">B=1\r\n", false, false},         // another request's reply
        {"x>A=1\r\n", false, false},        // a stale byte in front
        {"A=1\r\n", false, false},          // no start mark
        {"\r\n", false, false},             // an empty line
        {">A=" + std::string(250, '1') + "\r\n", true, true},    // 255 characters fit
        {">A=" + std::string(251, '1') + "\r\n", false, false},  // 256 do not
        {">A=" + std::string(2000, '1') + "\r\n", false, false},
    };
    for (const bool strict : {false, true}) {
        StrictRepliesWanted = strict;
        for (const auto& test : cases) {
            SCOPED_TRACE(testing::Message() << test.reply << (strict ? " strict" : ""));
            const bool good = strict ? test.goodIfStrict : test.good;
            Answer({test.reply});
            log.Take();
            ExchangeReplyBuffer buffer{};
            EXPECT_EQ(ExchangeChecked("@A?\r\n", ">A=", buffer), good);
            const std::string expected = test.reply.substr(0, 255);
            EXPECT_EQ(std::string(buffer.data()), expected);
            if (!good && test.reply.size() < 256) {
                EXPECT_TRUE(log.WaitFor("BADCMD1 send=@A?\r\n receive=" + test.reply + "\n"));
            }
        }
    }
}

TEST_F(LineTest, ReplyBehindALateOneIsRefusedIfStrict) {
    using std::chrono::milliseconds;
    using Pieces = std::vector<simulator::ScriptedReply::Piece>;
    const std::string good = ">A=1\r\n";
    const struct {
        Pieces first;
        milliseconds wait;
        std::string late;
    } cases[] = {
        {{{milliseconds(0), good}, {milliseconds(80), ">A=7\r\n"}}, milliseconds(300), ">A=7\r\n"},
        {{{milliseconds(2900), ">A=8\r\n"}}, milliseconds(600), ">A=8\r\n"},
        {{{milliseconds(2900), ">B=8\r\n>A="}}, milliseconds(600), ">B=8\r\n>A="},
        {{{milliseconds(2900), std::string(900, '9')}}, milliseconds(600), std::string(900, '9')},
    };
    StrictRepliesWanted = true;
    for (const auto& test : cases) {
        SCOPED_TRACE(test.late);
        Answer({test.first});
        ExchangeReplyBuffer buffer{};
        ExchangeChecked("@A?\r\n", ">A=", buffer);
        test_support::Pause(test.wait);
        Answer({good, good});
        log.Take();
        EXPECT_FALSE(ExchangeChecked("@A?\r\n", ">A=", buffer));
        EXPECT_EQ(log.Take(), "LATE REPLY DROPPED " + test.late +
                                  "\nBADCMD1 send=@A?\r\n receive=" + good + "\n");
        EXPECT_TRUE(ExchangeChecked("@A?\r\n", ">A=", buffer));
        EXPECT_EQ(log.Take(), "");
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
