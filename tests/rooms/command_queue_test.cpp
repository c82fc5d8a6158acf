#include "link/command_queue.h"

#include <limits>

#include "link/line_gate.h"
#include "rooms/room_test.h"
#include "settings/settings.h"
#include "worker/lights.h"

using test_support::LineTest;
using test_support::RoomTest;

namespace {

using Entry = std::pair<std::uint32_t, std::string>;

std::optional<Entry> Pop() {
    const LockHold hold(CommandQueueLock);
    PostedCommand command;
    return ZbComPopUniqueCommandNoLock(command) ? std::optional(Entry{command.id, command.text})
                                                : std::nullopt;
}

std::vector<Entry> PopAll() {
    std::vector<Entry> entries;
    while (const auto entry = Pop()) {
        entries.push_back(*entry);
    }
    return entries;
}

TEST_F(RoomTest, RepeatsFoldIntoTheOldestPlaceWithTheNewestText) {
    const struct {
        std::vector<Entry> posted;
        Entry popped;
        std::vector<Entry> left;
        int folded;
    } cases[] = {
        {{{1, "T1"}}, {1, "T1"}, {}, 0},
        {{{1, "T1"}, {2, "T2"}}, {1, "T1"}, {{2, "T2"}}, 0},
        {{{1, "T1"}, {2, "T2"}, {1, "T3"}}, {1, "T3"}, {{2, "T2"}}, 1},
        {{{1, "T1"}, {1, "T2"}, {1, "T3"}, {2, "T4"}}, {1, "T3"}, {{2, "T4"}}, 2},
        {{{1, "a"}, {2, "b"}, {3, "c"}, {1, "d"}, {4, "e"}, {1, "f"}},
         {1, "f"},
         {{2, "b"}, {3, "c"}, {4, "e"}},
         2},
        {{{100, "@CRZMX=1\r\n"}, {101, "x"}, {100, "@CRZMX=0\r\n"}},
         {100, "@CRZMX=0\r\n"},
         {{101, "x"}},
         1},
    };
    EXPECT_FALSE(Pop());
    for (const auto& test : cases) {
        for (const auto& [id, text] : test.posted) {
            EXPECT_TRUE(PostCommand(id, text));
        }
        log.Take();
        EXPECT_EQ(Pop(), test.popped);
        std::string lines;
        for (int i = 0; i < test.folded; ++i) {
            lines += "ZbComPopUniqueCommandNoLock POPPED!\n";
        }
        EXPECT_EQ(log.Take(), lines);
        EXPECT_EQ(PopAll(), test.left);
    }
}

TEST_F(RoomTest, LongRunOfOneLampIsOneCommand) {
    for (int i = 0; i <= 3000; ++i) {
        SetLight(3, i);
        SetLight(i % 11, 7);
    }
    EXPECT_EQ(PopAll().size(), 11U);
}

TEST_F(RoomTest, CommandsOfALostLineAreFoldedAsTheyArePosted) {
    for (const Entry& early : {Entry{1, "old"}, Entry{2, "b"}, Entry{1, "older than the last"}}) {
        EXPECT_TRUE(PostCommand(early.first, early.second));
    }
    SetLineLost(true);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(PostCommand(1, std::to_string(i)));
        EXPECT_TRUE(PostCommand(3, std::to_string(i)));
    }
    EXPECT_FALSE(PostCommand(HomingXId, "x"));
    EXPECT_FALSE(PostCommand(HomingYId, "y"));
    {
        const LockHold hold(CommandQueueLock);
        EXPECT_EQ(CommandQueue.size(), 4U);
    }
    SetLineLost(false);
    EXPECT_EQ(PopAll(), (std::vector<Entry>{{1, "999"}, {2, "b"}, {3, "999"}}));
}

TEST_F(RoomTest, LampValuesAreScaledAndHeldToTheirRange) {
    constexpr int Most = std::numeric_limits<int>::max();
    const struct {
        int lamp, value;
        const char* text;
    } cases[] = {
        {0, -1, "@LBRT0=0\r\n"},        {1, 0, "@LBRT1=0\r\n"},       {2, 1, "@LBRT2=39\r\n"},
        {3, 127, "@LBRT3=4980\r\n"},    {2, 128, "@LBRT2=5020\r\n"},  {5, 254, "@LBRT5=9961\r\n"},
        {10, 255, "@LBRT10=10000\r\n"}, {6, 256, "@LBRT6=10000\r\n"}, {7, Most, "@LBRT7=10000\r\n"},
        {8, -Most - 1, "@LBRT8=0\r\n"},
    };
    SerialLogEnabled = 1;
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        log.Take();
        EXPECT_TRUE(SetLight(test.lamp, test.value));
        EXPECT_EQ(Pop(), Entry(test.lamp, test.text));
        EXPECT_EQ(log.Take(),
                  "MyPostLight value=" + std::to_string(test.value) + " cmd= " + test.text);
    }
    SerialLogEnabled = 0;
    EXPECT_TRUE(SetLight(1, 1));
    Pop();
    for (const int lamp : {11, -1, Most, -Most - 1}) {
        EXPECT_FALSE(SetLight(lamp, 1));
    }
    EXPECT_FALSE(Pop());
    EXPECT_EQ(log.Take(), "");
}

TEST_F(LineTest, PostedCommandsReplyIsNotLookedAt) {
    Answer({"anything\n", ""});
    EXPECT_TRUE(RunPostedCommand("@LBRT1=5\r\n"));
    log.Take();
    EXPECT_FALSE(RunPostedCommand("@LBRT1=6\r\n"));
    EXPECT_EQ(log.Take(),
              "ZbComRead timeout retry\nZbComRead TIMEEOUT!\nZbComOpenWriteRead read failure\n");
}

}  // namespace
