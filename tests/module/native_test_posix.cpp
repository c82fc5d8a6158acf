#include "module/panel_test.h"
#include "native/headless.h"

// What only a native machine can do: a port that comes and goes; and what only there can be seen.

using simulator::StageModel;
using test_support::ModuleTest;
using test_support::PanelTest;
using test_support::SimulatedController;

namespace {

TEST_F(ModuleTest, AbsentPortIsTriedUntilItIsThere) {
    Load("CmdPoll=10\n");
    Start();
    EXPECT_TRUE(log.WaitFor("BADCMD2 send=@CPOSMR?\r\n"));
    EXPECT_EQ(Health().link, ZBOVISK_LINK_NEVER_ANSWERED);
    EXPECT_STREQ(Health().lastFailure, "@CPOSMR?: the port could not be opened");
    EXPECT_EQ(Health().lastSystemError, std::uint32_t{ERROR_FILE_NOT_FOUND});
    SimulatedController& controller = PlugIn();
    controller->With([](StageModel& stage) { stage.Place({100, 200, 300}); });
    EXPECT_TRUE(SeesPosition(1, 2, 3));
    Stop();
}

TEST_F(ModuleTest, PulledCableKeepsTheValuesAndTheBounds) {
    SimulatedController& controller = PlugIn();
    controller->With([](StageModel& stage) { stage.Place({100, 200, 300}); });
    Load("CmdPoll=10\n");
    Start();
    EXPECT_TRUE(SeesPosition(1, 2, 3));
    controller->With([](simulator::Device& device) { device.PullCable(); });
    EXPECT_TRUE(log.WaitFor("BADCMD2 send=@CPOSMR?\r\n"));
    EXPECT_EQ(Health().link, ZBOVISK_LINK_FAILS);
    EXPECT_NE(Health().lastSystemError, 0U);
    EXPECT_EQ(Snapshot().cposmr.x, 1);
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_LT(GetTickCount64() - start, 2000U) << "a dead line answers at once";
}

TEST_F(PanelTest, RepeatedStartLeavesTheKeyboardWithTheHostUnlessThePanelIsHidden) {
    OpenPanel();
    const auto times = [this] { return headless::ViewOf(Panel().Window())->timesActivated; };
    ASSERT_TRUE(test_support::Eventually([&] { return times() == 1; }));
    const auto startAgain = [this] {
        Start();
        RequestsOf(IDC_REMOTE_ENABLE);  // Behind what the start has posted.
    };
    startAgain();
    EXPECT_EQ(times(), 1);
    Panel().PressAndWait(IDC_CLOSE);
    startAgain();
    EXPECT_EQ(times(), 2);
}

}  // namespace
