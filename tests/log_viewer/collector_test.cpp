#include "log_viewer/collector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>

#include "log/zbr_log.h"
#include "log_viewer/presence.h"

using log_viewer::Channel;
using log_viewer::Collector;
using log_viewer::LineStore;
using log_viewer::ViewerSeat;

namespace {

class CollectorTest : public testing::Test {
  protected:
    ~CollectorTest() override { writer.Close(); }

    std::string Taken() {
        LineStore::Place start;
        return store.ReadOn(start, {.stamps = false, .lineEnd = "\n"}).text;
    }

    Channel channel;
    ZBR_Log writer;
    LineStore store{100'000};
};

TEST_F(CollectorTest, LosesNothingOfSeveralThreads) {
    constexpr int Threads = 4;
    constexpr int Lines = 500;
    const log_viewer::Presence presence;
    Collector collector(channel, store, nullptr);
    std::atomic<int> written{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < Lines; ++i) {
                // What finds no room is dropped by the writer, not by the reader.
                while (static_cast<int>(store.Received()) + 150 < written) {
                    std::this_thread::yield();
                }
                ++written;
                writer << std::to_string(thread) + " " + std::to_string(i) + "\n";
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    writer << "no line-feed";
    EXPECT_TRUE(collector.Stop());

    std::istringstream taken(Taken());
    std::map<int, int> next;
    for (int i = 0; i < Threads * Lines; ++i) {
        int thread = -1;
        int number = -1;
        taken >> thread >> number;
        ASSERT_EQ(number, next[thread]++) << "thread " << thread;
    }
    std::string rest;
    std::getline(taken >> std::ws, rest);
    EXPECT_EQ(rest, "no line-feed");
}

TEST_F(CollectorTest, TakesPiecesThatNobodyAnnounces) {
    Collector collector(channel, store, nullptr);
    writer << "piece";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (Taken() != "piece" && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(Taken(), "piece");
}

TEST_F(CollectorTest, TrustsNeitherTheBlockNorTheMutexsHolders) {
    writer << "x";
    SharedMap map;
    WCHAR* const block = map.EnsureView();
    std::fill_n(block, LogBlockCharacters, WCHAR{'j'});
    std::u16string text;
    // The holder has a handle of its own, as another process has, and ends without a release.
    std::thread([] {
        WaitForSingleObject(CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME")), INFINITE);
    }).join();
    EXPECT_TRUE(channel.Take(text, 0));
    EXPECT_EQ(text, std::u16string(5000, u'j')) << "all of the block, and nothing behind it";
    EXPECT_TRUE(channel.Take(text, 0));
    EXPECT_EQ(text, u"") << "junk behind the new end is none of the text";
    writer << "room again";
    bool taken = true;
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, WIDE("ZBR_LOG_MAPLOCKNAME"));
    WaitForSingleObject(mutex, INFINITE);
    std::thread([&] { taken = channel.Take(text, 0); }).join();
    EXPECT_FALSE(taken);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    EXPECT_TRUE(channel.Take(text, 0));
    EXPECT_EQ(text, u"room again");
    map.Close();
}

TEST(Seat, IsForOneViewerOnly) {
    std::optional<ViewerSeat> first(std::in_place);
    EXPECT_TRUE(*first);
    EXPECT_FALSE(ViewerSeat());
    first.reset();
    EXPECT_TRUE(ViewerSeat());
    const log_viewer::Presence otherMake;
    EXPECT_FALSE(ViewerSeat());
}

}  // namespace
