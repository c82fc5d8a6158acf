#include "simulator/replay.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <memory>

#include "module/module_test.h"

using namespace std::chrono_literals;
using simulator::Replay;
using test_support::Eventually;
using test_support::ModuleTest;
using test_support::SimulatedController;

namespace {

std::atomic<int> goodEnds{0};
std::atomic<int> badEnds{0};

void NoteEnd(bool, bool error, const McndReply*, std::intptr_t) {
    ++(error ? badEnds : goodEnds);
}

std::string ReadRecord(const std::string& name) {
    std::ifstream file(OVISK_TRACES "/" + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The module against a recorded controller.
class ReplayTest : public ModuleTest {
  protected:
    void StartAgainst(const std::string& record) {
        goodEnds = badEnds = 0;
        // The script lives until the controller goes, which is after this.
        replay_ = std::make_shared<Replay>(simulator::ReadTrace(record));
        controller_ = &PlugIn();
        (*controller_)->SetScript([replay = replay_](const std::string& request) {
            return replay->Answer(request);
        });
        Load();
        Start();
    }
    template <class Ask>
    auto AskReplay(Ask ask) {
        return (*controller_)->With([&](simulator::Device&) { return ask(*replay_); });
    }
    bool Move(double x, double y, double z) {
        return Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(x, y, z, NoteEnd, 0);
    }
    void ExpectFollowed() {
        EXPECT_TRUE(Eventually(
            [this] { return AskReplay([](Replay& replay) { return replay.AtEnd(); }); }));
        Stop();
        AskReplay([](Replay& replay) {
            replay.Finish();
            std::string messages;
            for (const std::string& message : replay.TakeMessages()) {
                messages += message + "\n";
            }
            EXPECT_EQ(replay.Counts().Departures(), 0U) << messages << replay.Summary();
        });
    }

  private:
    std::shared_ptr<Replay> replay_;
    SimulatedController* controller_ = nullptr;
};

TEST_F(ReplayTest, MoveAndLampAreFollowed) {
    StartAgainst(ReadRecord("move-and-lamp.log"));
    EXPECT_TRUE(SeesPosition(120, -34, 6));
    EXPECT_TRUE(Module().ZbOvisk_SetLight(2, 128));
    EXPECT_TRUE(Eventually([this] { return Snapshot().labr.labr2 == 5020; }));
    EXPECT_TRUE(Move(0.25, -0.1, 0.05));
    EXPECT_TRUE(Eventually([] { return goodEnds == 1; }));
    EXPECT_TRUE(SeesPosition(2500, -1000, 500));
    ExpectFollowed();
}

TEST_F(ReplayTest, FaultsOfACustomerAreFollowed) {
    StartAgainst(ReadRecord("faults.log"));
    EXPECT_TRUE(Eventually([this] { return Snapshot().cposmr.yError != 0; }));
    EXPECT_TRUE(Eventually([this] { return Snapshot().cposmr.yError == 0; }));
    EXPECT_TRUE(log.WaitFor("BADCMD1 send=@CPOSMR?")) << "replies without their CR";
    EXPECT_TRUE(log.WaitFor("ZbComRead TIMEEOUT!")) << "a lost reply";
    EXPECT_TRUE(Move(2.04, 0.05, 0.01)) << "beyond the limit";
    EXPECT_TRUE(Eventually([] { return badEnds == 1; }));
    EXPECT_TRUE(SeesPosition(20000, 500, 100));
    ExpectFollowed();
}

TEST_F(ReplayTest, AnotherRequestThanRecordedGetsNoReply) {
    std::string record = ReadRecord("move-and-lamp.log");
    std::size_t target = 0;
    while ((target = record.find("@MMVAL=+250000")) != record.npos) {
        record.replace(target, 14, "@MMVAL=+250001");
    }
    StartAgainst(record);
    EXPECT_FALSE(Move(0.25, -0.1, 0.05));
    const auto messages = AskReplay([](Replay& replay) { return replay.TakeMessages(); });
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0],
              "departure: @MMVAL=+250000,-100000,+50000 came in the place of line 268: "
              "@MMVAL=+250001,-100000,+50000: no reply");
}

}  // namespace
