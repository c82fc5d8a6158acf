#include <algorithm>

#include "module/module_test.h"
#include "support/machine.h"

using namespace std::chrono_literals;
using simulator::StageModel;
using test_support::Eventually;
using test_support::ModuleTest;
using test_support::SimulatedController;

namespace {

std::size_t Count(const std::vector<std::string>& requests, const std::string& text) {
    return static_cast<std::size_t>(std::count(requests.begin(), requests.end(), text));
}

TEST_F(ModuleTest, HostReadsALiveStage) {
    SimulatedController& controller = PlugIn();
    controller->With([](StageModel& stage) {
        stage.Place({25000, -14900, 300});
        stage.SetSwitch(simulator::MeasMode, 4);
        stage.SetLamp(1, 1200);
    });
    Load();
    EXPECT_EQ(Snapshot().cposmr.x, 0);
    Start();
    EXPECT_TRUE(SeesPosition(250, -149, 3));
    EXPECT_TRUE(Eventually([&] { return Snapshot().labr.labr1 == 1200; }));
    EXPECT_EQ(Snapshot().sswc.MEAS_MODE, 4);

    bool any = false;
    bool emergency = true;
    bool lamps = false;
    EXPECT_TRUE(Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps));
    EXPECT_TRUE(lamps && !any && !emergency) << "the first lamp values differ from zeros";

    controller->With([](StageModel& stage) { stage.SetSwitch(simulator::EmergencySwitch, 1); });
    EXPECT_TRUE(Eventually([&] { return Snapshot().sswc.EMER_SW == 1; }));
    controller->With([](StageModel& stage) { stage.SetSwitch(simulator::EmergencySwitch, 0); });
    controller->TakeRequestLog();
    EXPECT_TRUE(controller->WaitForRequest("@SSWC?\r\n", 2, 30s));
    EXPECT_TRUE(Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps));
    EXPECT_TRUE(any && emergency && !lamps) << "a switch that went back is still told";
    EXPECT_FALSE(Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps));
}

TEST_F(ModuleTest, WireOrderIsRemoteModeThenPolls) {
    SimulatedController& controller = PlugIn();
    Load("CmdPoll=20\n");
    Start();
    ASSERT_TRUE(controller->WaitForRequest("@LABR?\r\n", 2, 30s));
    const std::vector<std::string> requests = controller->RequestLog();
    ASSERT_EQ(requests[0], "@SMOD=1\r\n");
    EXPECT_EQ(requests[1], "@CPOSMR?\r\n") << "no status poll in the first pass";
    EXPECT_EQ(requests[2], "@CPOSMR?\r\n");
    for (std::size_t i = 1; i < requests.size(); ++i) {
        const std::string& before = requests[i - 1];
        EXPECT_EQ(requests[i] == "@SSWC?\r\n", before == "@CPOSMR?\r\n" && requests[i] != before);
        EXPECT_EQ(requests[i] == "@LABR?\r\n", before == "@SSWC?\r\n");
    }
    EXPECT_GT(Count(requests, "@CPOSMR?\r\n"), Count(requests, "@SSWC?\r\n") * 3);
}

TEST_F(ModuleTest, StartsOnceAndNeverAgain) {
    SimulatedController& controller = PlugIn();
    Load();
    Start(1);
    Start(0x100000002);
    EXPECT_TRUE(controller->WaitForRequest("@CPOSMR?\r\n", 2, 30s));
    EXPECT_EQ(Count(controller->RequestLog(), "@SMOD=1\r\n"), 2U);
    Stop();
    EXPECT_TRUE(log.WaitFor("OviskCmd_Startup data=1\n"));
    EXPECT_TRUE(log.WaitFor("OviskCmd_Startup data=2\n"));
    EXPECT_TRUE(log.WaitFor(
        "OviskCmd_Shutdown data=0\nOviskCmd_Shutdown closing comms\nOviskCmd_Shutdown finished\n"));

    controller->TakeRequestLog();
    log.Take();
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_LT(GetTickCount64() - start, 1500U) << "nothing is left to wait for";
    Start();
    EXPECT_TRUE(log.WaitFor("ZbComOpen opening: ")) << "remote mode opens the port again";
    test_support::Pause(300ms);
    EXPECT_EQ(controller->RequestLog(), std::vector<std::string>{"@SMOD=1\r\n"});
}

TEST_F(ModuleTest, ShutdownWithoutStartUsesUpItsWait) {
    Load();
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_GE(GetTickCount64() - start, 2000U);
}

TEST_F(ModuleTest, UnknownCommandsAreLogged) {
    Load();
    for (const std::uint32_t command : {0U, 4U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(Module().OVISK_ZbrCmd(command, 0));
    }
    EXPECT_TRUE(log.WaitFor("ZbOvisk::ZbrCmd unhandle cmd=0\n"));
    EXPECT_TRUE(log.WaitFor("ZbOvisk::ZbrCmd unhandle cmd=4\n"));
    EXPECT_TRUE(log.WaitFor("ZbOvisk::ZbrCmd unhandle cmd=-1\n"));
}

TEST_F(ModuleTest, SettingsAreReadAgainWhileTheWorkerRuns) {
    SimulatedController& controller = PlugIn();
    controller->With([](StageModel& stage) { stage.Place({1000, 2000, 3000}); });
    Load("ScaleFactor=10\n");
    Start();
    EXPECT_TRUE(SeesPosition(100, 200, 300));
    log.Take();
    test_support::WriteSettings("[Ovisk]\nSerialLog=1\nPort=77\n");
    EXPECT_TRUE(SeesPosition(10, 20, 30)) << "the default counts again";
    EXPECT_TRUE(log.WaitFor("GOODCMD send=@CPOSMR?\r\n receive=>CPOSMR=1000,2000,3000\r\n dt="));
    test_support::RemoveSettings();
    EXPECT_TRUE(Eventually([&] {
        log.Take();
        test_support::Pause(400ms);
        return log.Text().empty();
    })) << "the serial log goes off";
}

}  // namespace
