#include <algorithm>

#include "module/module_test.h"
#include "resources/resource_ids.h"
#include "support/dialog_driver.h"

// What holds after a stop and at an unloading, on a line of any kind.

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using simulator::StageModel;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::IsAbout;
using test_support::milliseconds;
using test_support::ModuleTest;
using test_support::Pause;
using test_support::SimulatedController;
using test_support::Thread;
using test_support::TimeOf;
using test_support::TimesAreExact;

namespace {

constexpr milliseconds SilentRead = 2650ms;
// How long to look whether something goes wrong: minutes where they cost nothing.
const milliseconds LongWatch = TimesAreExact() ? 10min : 6s;

/// Another program's view of the port. Wine shares an open port, and so calls it free.
bool PortIsFree() {
    const HANDLE port = CreateFileA(R"(\\.\COM3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    return port != INVALID_HANDLE_VALUE && CloseHandle(port) != FALSE;
}

bool OpenPortsAreShared() {
    const HANDLE port = CreateFileA(R"(\\.\COM3)", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    const bool shared = PortIsFree();
    CloseHandle(port);
    return shared;
}

class StopTest : public ModuleTest {
  protected:
    void StartOnLine(const std::string& settings = "", std::uintptr_t data = 0) {
        line_ = &PlugIn();
        Load(settings);
        Start(data);
    }
    SimulatedController& Line() { return *line_; }

    /// From now on the controller hears everything and says nothing.
    void Silence() {
        Line()->SetScript([](const std::string&) { return std::optional<ScriptedReply>(""); });
    }
    void Speak() { Line()->SetScript({}); }

    /// The worker is at the beginning of a query that nobody answers.
    void CatchWorkerInSilence() {
        Silence();
        Line()->TakeRequestLog();
        ASSERT_TRUE(Line()->WaitForRequest("@CPOSMR?\r\n", 2, 60s));
        Line()->TakeRequestLog();
    }

    void PressOkOfAutomaticHoming() {
        Thread host([this] { EXPECT_TRUE(Module().OVISK_ZbrCmd(OviskCmd_Home, 0)); });
        DialogDriver("Warning").Press(IDOK);
    }

  private:
    SimulatedController* line_ = nullptr;
};

TEST_F(StopTest, NothingMovesOnALineThatComesBackAfterTheStop) {
    StartOnLine("", 1);
    CatchWorkerInSilence();
    PressOkOfAutomaticHoming();
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 255));
    EXPECT_TRUE(IsAbout(TimeOf([this] { Stop(); }), 2s));
    EXPECT_EQ(Line()->RequestLog(), std::vector<std::string>{});
    Speak();
    Pause(LongWatch);
    EXPECT_EQ(Line()->RequestLog(), std::vector<std::string>{});
    EXPECT_EQ(Line()->With([](StageModel& stage) { return stage.Lamp(1); }), 0);
    EXPECT_TRUE(PortIsFree()) << "the worker is over, and has closed it";
}

TEST_F(StopTest, HomingIsNotStartedByAStopThatComesInAPauseBeforeTheWrite) {
    if (!TimesAreExact()) {
        GTEST_SKIP() << "the port has to appear";
    }
    Load("Delay=4000\n");
    Start(1);  // There is no port: the next exchange waits for 4 s before it writes.
    SimulatedController& line = PlugIn();
    PressOkOfAutomaticHoming();
    EXPECT_TRUE(IsAbout(TimeOf([this] { Stop(); }), 2s));
    Pause(LongWatch);
    EXPECT_EQ(line->RequestLog(), std::vector<std::string>{});
    EXPECT_TRUE(PortIsFree());
}

TEST_F(StopTest, HostsOwnCallsOpenThePortAgain) {
    StartOnLine();
    CatchWorkerInSilence();
    Stop();
    Speak();
    EXPECT_TRUE(Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, nullptr, 0));
    EXPECT_EQ(Line()->TakeRequestLog(), std::vector<std::string>{"@MMVAL=+10000,+0,+0\r\n"});
    Start();
    EXPECT_EQ(Line()->TakeRequestLog(), std::vector<std::string>{"@SMOD=1\r\n"});
}

TEST_F(StopTest, WhatWasPostedBeforeTheStopGoesOutOnAGoodLine) {
    StartOnLine("CmdPoll=0\n");
    for (const int value : {255, 0}) {
        EXPECT_TRUE(Module().ZbOvisk_SetLight(3, 200));
        EXPECT_TRUE(Module().ZbOvisk_SetLight(4, value));
    }
    Stop();
    EXPECT_EQ(Line()->With([](StageModel& stage) { return stage.Lamp(3); }), 7843);
    EXPECT_EQ(Line()->With([](StageModel& stage) { return stage.Lamp(4); }), 0);
    EXPECT_TRUE(PortIsFree());
}

TEST_F(StopTest, FaderKeepsThePollsAwayUntilItPauses) {
    StartOnLine();
    ASSERT_TRUE(Line()->WaitForRequest("@SSWC?\r\n", 1, 60s));
    EXPECT_TRUE(Module().ZbOvisk_SetLight(1, 0));
    ASSERT_TRUE(Line()->WaitForRequest("@LBRT1=0\r\n", 1, 60s));
    Line()->TakeRequestLog();
    Line()->With([](StageModel& stage) { stage.SetSwitch(simulator::EmergencySwitch, 1); });
    const int posts = TimesAreExact() ? 1100 : 40;
    for (int value = 0; value < posts; ++value) {
        Module().ZbOvisk_SetLight(1, value % 256);
        Pause(TimesAreExact() ? 50ms : 20ms);
    }
    const std::vector<std::string> requests = Line()->RequestLog();
    if (TimesAreExact()) {
        const auto isLamp = [](const std::string& one) { return one.starts_with("@LBRT1="); };
        EXPECT_EQ(std::ranges::count_if(requests, isLamp), posts);
        EXPECT_EQ(requests.size(), static_cast<std::size_t>(posts)) << "nothing else goes out";
        EXPECT_EQ(Snapshot().sswc.EMER_SW, 0);
    }
    EXPECT_TRUE(Eventually([this] { return Snapshot().sswc.EMER_SW == 1; })) << "the pause ends it";
}

TEST_F(StopTest, UnloadingIsSafeOnADeadLine) {
    for (int round = 0; round < (TimesAreExact() ? 20 : 2); ++round) {
        StartOnLine();
        CatchWorkerInSilence();
        EXPECT_TRUE(IsAbout(TimeOf([this] { Stop(); }), 2s));
        UnloadAtOnce();
        EXPECT_TRUE(Eventually([] { return !IsLoaded(); }))
            << "the worker takes the library with it";
        EXPECT_TRUE(PortIsFree());
        // A load now might lie where a worker that was left behind still runs.
        Pause(SilentRead + 1s);
        Speak();
    }
    StartOnLine();
    EXPECT_TRUE(Line()->WaitForRequest("@CPOSMR?\r\n", 2, 60s)) << "a fresh module";
}

TEST_F(StopTest, FreshModuleFindsThePortFree) {
    StartOnLine();
    Stop();
    if (OpenPortsAreShared()) {
        GTEST_SKIP() << "no program can be kept from the port here";
    }
    EXPECT_TRUE(Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, nullptr, 0));
    EXPECT_FALSE(PortIsFree()) << "the host's own move opened it";
    Unload();
    EXPECT_TRUE(PortIsFree());
}

TEST_F(StopTest, UnloadingARunningModuleLeavesItsWorkerAtWork) {
    StartOnLine();
    UnloadAtOnce();
    Line()->TakeRequestLog();
    EXPECT_TRUE(Line()->WaitForRequest("@CPOSMR?\r\n", 5, 60s));
    EXPECT_TRUE(IsLoaded());
    Load();
    EXPECT_TRUE(Eventually([this] { return Snapshot().sswc.replyError == 0; }));
    Start();
    Line()->TakeRequestLog();
    EXPECT_TRUE(Line()->WaitForRequest("@SSWC?\r\n", 2, 60s));
    Unload();
    EXPECT_TRUE(Eventually([] { return !IsLoaded(); }));
}

}  // namespace
