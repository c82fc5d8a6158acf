#include "simulator/trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace simulator {
namespace {

/// "LINE REQUEST", and for each piece of the reply " MILLISECONDS:PIECE"; "?" without an outcome.
std::string Told(const Trace& trace) {
    std::ostringstream text;
    for (const Exchange& exchange : trace.exchanges) {
        text << exchange.line << " " << exchange.request;
        for (const Exchange::Piece& piece : exchange.pieces) {
            text << " " << (piece.at - exchange.at) / std::chrono::milliseconds(1) << ":"
                 << piece.bytes;
        }
        text << (exchange.complete ? "" : "?") << ";";
    }
    return text.str();
}

TEST(Trace, IsReadInEveryFormAndCondition) {
    const std::string good =
        "ZbComWrite: @Q?\r\n\nZbComRead: >Q=1\r\n\nReply: >Q=1\r\n\n"
        "GOODCMD send=@Q?\r\n receive=>Q=1\r\n dt=30\n";
    const std::string changed = "alien\nZbComWrite: @Q?\n\nZbComRead: >Q=1\n\nReply: >Q=1\n\n";
    const std::string mixed =
        "ZbComWrite: @Q?\r\n\nZbComRead: >Q=1\r\nMyPostLight value=1 cmd= @L=1\r\n\n"
        "Reply: >Q=1\r\n\n";
    const struct {
        const char* name;
        std::string file;
        std::string told;
    } cases[] = {
        {"plain", good, "1 @Q?\r\n 0:>Q=1\r\n;"},
        {"stamped and escaped, over midnight",
         "[23:59:59.990] ZbComWrite: @Q?\\r\n[23:59:59.990] \n"
         "[00:00:00.010] ZbComRead partial \">\\\\\\x01\" byte count 5\n"
         "[00:00:00.040] ZbComRead: >\\\\\\x01\xC3\xA9\xEF\xBF\xBF\\r\n[00:00:00.040]\n",
         std::string("1 @Q?\r\n 20:>\\\x01") + std::string(2, '\0') + " 50:\xE9\xFF\r\n;"},
        {"silence",
         "ZbComWrite: @Q?\r\n\nZbComRead partial \">Q\" byte count 2\nZbComRead timeout retry\n"
         "ZbComRead TIMEEOUT!\nZbComOpenWriteRead read failure\nBADCMD2 send=@Q?\r\n\n",
         "1 @Q?\r\n 0:>Q;"},
        {"no line end, several lines, no outcome",
         "ZbComWrite: @L?\nZbComRead: a\nb\r\nc\nReply: a\nb\r\nc\nZbComWrite: @Q?\r\n\n",
         "1 @L? 0:a\nb\r\nc;8 @Q?\r\n?;"},
        {"carriage returns lost", changed, "2 @Q?\r\n 0:>Q=1\r\n;"},
        {"another thread inside the reply", mixed, "1 @Q?\r\n 0:>Q=1\r\n;"},
        {"request lost", "ZbComWrite: \n" + good, "2 @Q?\r\n 0:>Q=1\r\n;"},
        {"reply lost", good.substr(0, 18) + good.substr(good.find("GOOD")),
         "1 @Q?\r\n 0:>Q=1\r\n;"},
    };
    for (const auto& [name, file, told] : cases) {
        EXPECT_EQ(Told(ReadTrace(file)), told) << name;
    }
}

TEST(Trace, TakesMixedLinesOfTwoThreadsApart) {
    const std::string first = "ZbComWrite: @Q?\r\n\nZbComRead: >Q=1\r\n\nReply: >Q=1\r\n\n";
    const std::vector<std::string> repetition = {
        "GOODCMD send=", "@Q?\r\n", " receive=", ">Q=1\r\n", " dt=", "30", "\n"};
    const std::vector<std::string> request = {"ZbComWrite: ", "@M=+1,+2\r\n", "\n"};
    std::string turns = "0000000111";  // whose piece comes next
    do {
        std::string file = first;
        std::size_t next[2] = {0, 0};
        for (const char turn : turns) {
            file += turn == '0' ? repetition[next[0]++] : request[next[1]++];
        }
        const Trace trace = ReadTrace(file + "ZbComRead: >M=0\r\n\n");
        ASSERT_EQ(trace.exchanges.size(), 2U) << file;
        EXPECT_EQ(trace.exchanges[0].request, "@Q?\r\n") << file;
        EXPECT_EQ(trace.exchanges[1].request, "@M=+1,+2\r\n") << file;
        EXPECT_EQ(trace.exchanges[1].Reply(), ">M=0\r\n") << file;
    } while (std::ranges::next_permutation(turns).found);
}

TEST(Trace, OutlivesAnyBytes) {
    const std::string words[] = {"ZbComWrite: ",
                                 "ZbComRead: ",
                                 "ZbComRead partial \"",
                                 "Reply: ",
                                 "\" byte count ",
                                 "999999999999999999999",
                                 "GOODCMD send=",
                                 " receive=",
                                 " dt=",
                                 "@Q?\r",
                                 ">Q=1",
                                 "\n",
                                 "\\x",
                                 "\\",
                                 "\xEF",
                                 "[12:00:00.000]",
                                 "ZbComOpenWriteRead read failure",
                                 "\r",
                                 "\xC3"};
    std::uint32_t chance = 1;
    for (int round = 0; round < 3000; ++round) {
        std::string file;
        for (int word = 0; word < 40; ++word) {
            chance = chance * 1664525 + 1013904223;
            file += words[(chance >> 16) % std::size(words)];
        }
        ReadTrace(file);
    }
}

}  // namespace
}  // namespace simulator
