#include "module/module_test.h"
#include "simulator/pty_transport.h"

// What only a native machine can do: a port that comes and goes.

using simulator::StageModel;
using test_support::ModuleTest;
using test_support::SimulatedController;

namespace {

TEST_F(ModuleTest, AbsentPortIsTriedUntilItIsThere) {
    Load("CmdPoll=10\n");
    Start();
    EXPECT_TRUE(log.WaitFor("ZbComOpen CreateFile Error: "));
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
    dynamic_cast<simulator::PtyTransport&>(controller.Line()).Unplug();
    EXPECT_TRUE(log.WaitFor("BADCMD2 send=@CPOSMR?\r\n"));
    EXPECT_EQ(Snapshot().cposmr.x, 1);
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_LT(GetTickCount64() - start, 2000U) << "a dead line answers at once";
}

}  // namespace
