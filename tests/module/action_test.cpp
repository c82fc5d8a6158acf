#include <atomic>

#include "module/module_test.h"

using namespace std::chrono_literals;
using simulator::StageModel;
using test_support::Eventually;
using test_support::ModuleTest;
using test_support::SimulatedController;

namespace {

/// What callbacks have to reach; a test's own while it runs.
struct {
    host_tool::ModuleLibrary* module = nullptr;
    std::atomic<int> notices{0};
    std::atomic<int> errors{0};
    std::atomic<std::intptr_t> data{0};
} seen;

void Note(bool finished, bool error, const McndReply* reply, std::intptr_t data) {
    EXPECT_TRUE(finished && reply != nullptr);
    seen.errors += error ? 1 : 0;
    seen.data = data;
    ++seen.notices;
}

class ActionTest : public ModuleTest {
  protected:
    SimulatedController& PlugInAndStart(const std::string& settings) {
        SimulatedController& controller = PlugIn();
        Load(settings);
        Start();
        seen.module = &Module();
        seen.notices = seen.errors = 0;
        return controller;
    }
    bool Move(double x, double y, double z, CncNotifyCallback callback, std::intptr_t data) {
        return Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(x, y, z, callback, data);
    }
};

TEST_F(ActionTest, PostWakesTheWorkerAndSkipsThePoll) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=1000000\n");
    controller->TakeRequestLog();
    EXPECT_TRUE(Module().ZbOvisk_SetLight(2, 128));
    EXPECT_TRUE(controller->WaitForRequest("@LBRT2=5020\r\n", 1, 30s));
    EXPECT_TRUE(Module().ZbOvisk_SetLight(10, 300));
    EXPECT_TRUE(controller->WaitForRequest("@LBRT10=10000\r\n", 1, 30s));
    EXPECT_FALSE(Module().ZbOvisk_SetLight(11, 1));
    EXPECT_EQ(controller->RequestLog().size(), 2U) << "nothing else went out";
    EXPECT_EQ(controller->With([](StageModel& stage) { return stage.Lamp(2); }), 5020);
}

TEST_F(ActionTest, PostNeverWaitsForAnExchange) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    controller->SetScript([](const std::string&) { return ""; });
    controller->TakeRequestLog();
    ASSERT_TRUE(controller->WaitForRequest("@CPOSMR?\r\n", 2, 30s));
    const ULONGLONG start = GetTickCount64();
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 1));
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 2));
    EXPECT_LT(GetTickCount64() - start, 1500U);
    controller->SetScript({});
    EXPECT_TRUE(controller->WaitForRequest("@LBRT1=78\r\n", 1, 30s));
    const auto requests = controller->RequestLog();
    EXPECT_EQ(std::count(requests.begin(), requests.end(), "@LBRT1=39\r\n"), 0) << "folded";
}

TEST_F(ActionTest, MoveTravelsAndItsEndIsToldOnce) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    EXPECT_TRUE(Move(0.2, -0.1, 0.05, Note, 4711));
    EXPECT_TRUE(Eventually([] { return seen.notices == 1; }));
    EXPECT_EQ(seen.errors, 0);
    EXPECT_EQ(seen.data, 4711);
    EXPECT_TRUE(SeesPosition(2000, -1000, 500));
    controller->TakeRequestLog();
    ASSERT_TRUE(controller->WaitForRequest("@LABR?\r\n", 2, 30s));
    const auto requests = controller->RequestLog();
    EXPECT_EQ(std::count(requests.begin(), requests.end(), "@MCND?\r\n"), 0)
        << "nothing is watched any more";
    EXPECT_EQ(seen.notices, 1);
}

TEST_F(ActionTest, BadEndsAreTold) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    EXPECT_TRUE(Move(2.04, 0, 0, Note, 1)) << "beyond the soft limit of 2 units";
    EXPECT_TRUE(Eventually([] { return seen.notices == 1; }, 60s));
    EXPECT_EQ(seen.errors, 1);
    EXPECT_TRUE(Move(-2, 0, 0, Note, 2));
    ASSERT_TRUE(controller->WaitForRequest("@MCND?\r\n", 1, 30s));
    controller->With([](StageModel& stage) { stage.Cancel(); });
    EXPECT_TRUE(Eventually([] { return seen.notices == 2; }, 60s));
    EXPECT_EQ(seen.errors, 2);
}

TEST_F(ActionTest, MoveThatShowsLateMotionEndsAtTheFirstStatusPoll) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    controller->With([](StageModel& stage) { stage.SetMotionDelay(5s); });
    EXPECT_TRUE(Move(1, 0, 0, Note, 1));
    EXPECT_TRUE(Eventually([] { return seen.notices == 1; }, 4s)) << "there is no grace period";
    EXPECT_EQ(seen.errors, 0);
}

TEST_F(ActionTest, CallbackMayUseTheModule) {
    PlugInAndStart("CmdPoll=10\n");
    const auto moveOn = [](bool finished, bool error, const McndReply* reply, std::intptr_t data) {
        Note(finished, error, reply, data);
        bool any, emergency, lamps;
        seen.module->ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps);
        OviskData record;
        EXPECT_TRUE(seen.module->ZbOvisk_GetOviskData(record));
        EXPECT_TRUE(seen.module->ZbOvisk_SetLight(1, static_cast<int>(data)));
        if (data < 3) {
            EXPECT_TRUE(seen.module->ZbOvisk_CncGotoAbsoluteNotifyWorld(
                0.01 * static_cast<double>(data + 1), 0, 0, Note, data + 10));
        }
    };
    EXPECT_TRUE(Move(0.01, 0, 0, moveOn, 1));
    EXPECT_TRUE(Eventually([] { return seen.notices == 2; }));
    EXPECT_EQ(seen.data, 11);
    EXPECT_TRUE(SeesPosition(200, 0, 0));
}

TEST_F(ActionTest, CallbackThatThrowsEndsTheWorkerQuietly) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    EXPECT_TRUE(Move(
        0.01, 0, 0, [](bool, bool, const McndReply*, std::intptr_t) { throw 1; }, 0));
    EXPECT_TRUE(Eventually([&] {
        controller->TakeRequestLog();
        test_support::Pause(3s);  // Longer than a worker that lives can wait for a reply.
        return controller->RequestLog().empty();
    }));
    log.Take();
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_LT(GetTickCount64() - start, 1500U);
    EXPECT_EQ(log.Take(),
              "OviskCmd_Shutdown data=0\nOviskCmd_Shutdown closing comms\n"
              "OviskCmd_Shutdown finished\n");
}

TEST_F(ActionTest, NobodyIsToldAboutANullCallbackOrAfterShutdown) {
    SimulatedController& controller = PlugInAndStart("CmdPoll=10\n");
    EXPECT_TRUE(Move(0.01, 0, 0, nullptr, 0));
    EXPECT_TRUE(controller->WaitForRequest("@MCND?\r\n", 1, 30s));
    EXPECT_TRUE(Move(1.9, 0, 0, Note, 0));
    Stop();
    EXPECT_EQ(seen.notices, 0);
}

TEST_F(ActionTest, EightThreadsHammerTheModule) {
    PlugInAndStart("CmdPoll=1\nDelay=0\nSerialLog=1\n");
    std::atomic<bool> stop{false};
    std::atomic<int> accepted{0};
    const auto run = [&](int kind) {
        for (int i = 0; !stop; ++i) {
            test_support::Pause(1ms);
            switch (kind % 4) {
                case 0:
                    Module().ZbOvisk_SetLight(i % 11, i % 256);
                    break;
                case 1:
                    accepted += Move(0.001 * (i % 10), 0.001, 0, Note, i) ? 1 : 0;
                    break;
                case 2:
                    Snapshot();
                    break;
                default: {
                    bool any, emergency, lamps;
                    Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps);
                }
            }
        }
    };
    std::vector<test_support::Thread> threads;
    for (int kind = 0; kind < 8; ++kind) {
        threads.emplace_back([&run, kind] { run(kind); });
    }
    EXPECT_TRUE(Eventually([&] { return accepted >= 50; }, 60s));
    stop = true;
    for (test_support::Thread& thread : threads) {
        thread.Join();
    }
    EXPECT_TRUE(Eventually([] { return seen.notices >= 1; })) << "the last move is told";
    EXPECT_LE(seen.notices, accepted.load());
}

}  // namespace
