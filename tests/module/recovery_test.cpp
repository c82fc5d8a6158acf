
#include "module/module_test.h"

using namespace std::chrono_literals;
using simulator::ScriptedReply;
using simulator::StageModel;
using test_support::ModuleTest;
using test_support::SimulatedController;

namespace {

const std::string Nul(1, '\0');

/// What a disturbed line gives in the place of every reply.
struct Disturbance {
    const char* name;
    ScriptedReply reply;
};

void PrintTo(const Disturbance& disturbance, std::ostream* out) {
    *out << disturbance.name;
}

const Disturbance Disturbances[] = {
    {"garbage", "\x80\xFF#garbage\x01\r\n"},
    {"NUL bytes", Nul + Nul + ">CPOSMR=9,9,9\r\n"},
    {"half a line", ">CPOSMR=9,9"},
    {"refusal", ">CPOSMR=#,E1,0\r\n"},
    {"another reply", ">SSWC=9,9,9\r\n"},
    {"1000 characters", ">CPOSMR=" + std::string(1000, '9') + "\r\n"},
    {"no line end at all", std::string(3000, '9')},
};

class DisturbedLine : public ModuleTest, public testing::WithParamInterface<Disturbance> {};

TEST_P(DisturbedLine, KeepsTheLastGoodValuesAndRecovers) {
    SimulatedController& controller = PlugIn();
    Load("CmdPoll=10\n");
    controller->With([](StageModel& stage) { stage.Place({100, 200, 300}); });
    Start();
    EXPECT_TRUE(SeesPosition(1, 2, 3));
    controller->SetScript([](const std::string&) { return std::optional(GetParam().reply); });
    controller->TakeRequestLog();
    ASSERT_TRUE(controller->WaitForRequest("@CPOSMR?\r\n", 2, 60s));
    const OviskData data = Snapshot();
    EXPECT_EQ(data.cposmr.x, 1);
    EXPECT_EQ(data.cposmr.replyErrorText, "");
    controller->With([](StageModel& stage) { stage.Place({400, 500, 600}); });
    controller->SetScript({});
    EXPECT_TRUE(SeesPosition(4, 5, 6));
}

INSTANTIATE_TEST_SUITE_P(Recovery, DisturbedLine, testing::ValuesIn(Disturbances));

TEST_F(ModuleTest, SilentControllerHoldsNoHostCallAndNoShutdown) {
    SimulatedController& controller = PlugIn();
    controller->With([](StageModel& stage) { stage.Place({100, 200, 300}); });
    Load();
    Start();
    EXPECT_TRUE(SeesPosition(1, 2, 3));
    controller->SetScript([](const std::string&) { return std::optional<ScriptedReply>(""); });
    controller->TakeRequestLog();
    ASSERT_TRUE(controller->WaitForRequest("@CPOSMR?\r\n", 2, 30s));
    // The second request has just begun: for 2.6 s the worker is inside its exchange.
    const ULONGLONG start = GetTickCount64();
    for (int i = 0; i < 1000; ++i) {
        Snapshot();
        bool any, emergency, lamps;
        Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps);
    }
    EXPECT_LT(GetTickCount64() - start, 2000U);
    EXPECT_EQ(Snapshot().cposmr.x, 1);
    const ULONGLONG stop = GetTickCount64();
    Stop();
    EXPECT_GE(GetTickCount64() - stop, 500U) << "the worker was not inside an exchange";
    EXPECT_LT(GetTickCount64() - stop, 10000U);
}

}  // namespace
