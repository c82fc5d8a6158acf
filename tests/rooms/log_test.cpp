#include "log/zbr_log.h"

#include <gtest/gtest.h>

#include <thread>

#include "controller/log_tap.h"
#include "support/window.h"

using test_support::LogBlock;

namespace {

class LogTest : public testing::Test {
  protected:
    LogBlock block;
    ZBR_Log channel;
    ~LogTest() override { channel.Close(); }
};

TEST_F(LogTest, BlockTakesWholeTextsUpToItsLimit) {
    const struct {
        std::size_t held, added;
        bool stored;
    } cases[] = {
        {0, 4999, true},   {0, 5000, false}, {0, 20000, false}, {4990, 9, true},
        {4990, 10, false}, {4999, 0, true},  {4999, 1, false},  {2500, 2499, true},
        {31, 1, true},     {32, 1, true},    {120, 1, true},    {200, 4799, true},
        {280, 1, true},    {319, 1, true},   {320, 1, true},    {321, 4678, true},
        {4799, 1, true},   {4800, 1, true},  {4801, 1, true},   {4991, 1, true},
        {4992, 7, true},   {4993, 6, true},  {4998, 1, true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(testing::Message() << test.held << " + " << test.added);
        block.Take();
        const std::string held(test.held, 'h');
        const std::string added(test.added, 'a');
        channel.WriteText(held.c_str());
        channel.WriteText(added.c_str());
        EXPECT_EQ(block.Take(), held + (test.stored ? added : ""));

        channel.WriteText(held.c_str());
        channel.WriteWideText(std::basic_string<WCHAR>(test.added, 'a').c_str());
        EXPECT_EQ(block.Take(), held + (test.stored ? added : ""));
    }
}

TEST_F(LogTest, BlockThatAnotherProcessSpoiltIsNeverOverrun) {
    channel.WriteText("x");
    std::fill_n(block.Characters(), LogBlockCharacters, WCHAR{'j'});
    channel.WriteText("lost");  // No end: the block counts as full.
    EXPECT_EQ(block.Characters()[LogBlockCharacters - 1], WCHAR{'j'});
    EXPECT_EQ(block.Take().size(), LogBlockCharacters);
    channel.WriteText("kept");
    EXPECT_EQ(block.Take(), "kept");
    block.Characters()[0] = 0xFFFF;
    block.Characters()[1] = 0;
    channel.WriteText("behind junk");
    EXPECT_EQ(block.Take(), "?behind junk");
}

TEST_F(LogTest, PiecesAndForms) {
    channel << "a" << std::string("b");
    channel.WriteFormatted("%s=%d\n", "c", -1);
    channel.WriteWideText(WIDE("w\n"));
    EXPECT_EQ(block.Take(), "abc=-1\nw\n");
    WriteLine("n=", Decimal{-2147483647 - 1}, " ", Decimal{0}, std::string(" s\0hidden", 9), "\n");
    EXPECT_EQ(block.Take(), "n=-2147483648 0 s\n");
}

TEST_F(LogTest, WriterGoesOnAfterAHolderThatDied) {
    channel.WriteText("1");
    // The holder has a handle of its own, as another process has.
    std::thread([] {
        WaitForSingleObject(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME")), INFINITE);
    }).join();
    channel.WriteText("2");
    EXPECT_EQ(block.Take(), "12");
}

TEST_F(LogTest, HeldMutexDelaysAPieceButDoesNotHoldItForGood) {
    channel.WriteText("1");
    WaitForSingleObject(block.Mutex(), INFINITE);
    std::thread writer([this] { channel.WriteText("lost"); });
    writer.join();
    ReleaseMutex(block.Mutex());
    channel.WriteText("2");
    EXPECT_EQ(block.Take(), "12");
}

TEST_F(LogTest, EventIsRaisedForLineFeedsWhileAViewerRuns) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, WIDE("ZBR_LOG_EVENTNAME"));
    const auto raised = [&] { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; };
    channel.WriteText("line\n");
    EXPECT_FALSE(raised()) << "nobody looks";
    {
        const test_support::Window viewer(WIDE("Zembra Log"));
        channel.WriteText("piece");
        EXPECT_FALSE(raised());
        channel.WriteText("end\nof line");
        EXPECT_TRUE(raised());
        EXPECT_FALSE(raised());
        channel.WriteWideText(WIDE("wide\n"));
        EXPECT_TRUE(raised());
        while (!block.Take().empty()) {
        }
        channel.WriteText(std::string(4999, 'f').c_str());
        channel.WriteText("dropped\n");
        EXPECT_TRUE(raised()) << "a viewer has to hear of a full block";
    }
    channel.WriteText("line\n");
    EXPECT_FALSE(raised());
    CloseHandle(event);
}

TEST_F(LogTest, FirstUseByManyThreadsLosesNothing) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this] { channel.WriteText("12345"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(block.Take().size(), 40U);
}

}  // namespace
