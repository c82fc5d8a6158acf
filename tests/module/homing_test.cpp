#include "module/homing_test.h"

namespace test_support {

using namespace std::chrono_literals;

void HomingTest::StartModule(std::uintptr_t startData, const std::string& settings) {
    controller = &PlugIn();
    (*controller)
        ->SetScript([this](const std::string& request) -> std::optional<simulator::ScriptedReply> {
            if (request != "@CCND?\r\n") {
                return std::nullopt;
            }
            const std::lock_guard hold(mutex_);
            if (fields_.empty()) {
                return "";
            }
            return std::vector<simulator::ScriptedReply::Piece>{
                {delay_, ">CCND=" + fields_ + "\r\n"}};
        });
    Load(settings);
    Start(startData);
}

HomingTest::~HomingTest() {
    FinishHome();
}

void HomingTest::SetCondition(const std::string& fields) {
    const std::lock_guard hold(mutex_);
    fields_ = fields;
}

void HomingTest::SetConditionDelay(std::chrono::milliseconds delay) {
    const std::lock_guard hold(mutex_);
    delay_ = delay;
}

void HomingTest::OpenHome() {
    FinishHome();
    host_ = Thread([this] { EXPECT_TRUE(Module().OVISK_ZbrCmd(OviskCmd_Home, 0)); });
}

void HomingTest::FinishHome() {
    host_.Join();
}

std::vector<std::string> HomingTest::TakeCommands() {
    std::vector<std::string> commands = (*controller)->TakeRequestLog();
    std::erase_if(commands, [](const std::string& request) {
        return request[1] != 'C' || request[2] != 'R';
    });
    return commands;
}

bool HomingTest::Comes(const std::string& command) {
    return (*controller)->WaitForRequest(command, 1, 30s);
}

bool HomingTest::IsTold(ZbOviskHoming homing, int axis, ZbOviskHomingEnd last) {
    return Eventually([=, this] {
        const ZbOviskHealth health = Health();
        return health.homing == homing && health.homingAxis == axis && health.lastHoming == last;
    });
}

bool HomingTest::StillAsks() {
    // What was under way may still come; two whole passes later everything new has been seen.
    (*controller)->TakeRequestLog();
    EXPECT_TRUE((*controller)->WaitForRequest("@CPOSMR?\r\n", 1, 30s));
    (*controller)->TakeRequestLog();
    EXPECT_TRUE((*controller)->WaitForRequest("@CPOSMR?\r\n", 2, 30s));
    const std::vector<std::string> requests = (*controller)->RequestLog();
    return std::count(requests.begin(), requests.end(), "@CCND?\r\n") > 0;
}

}  // namespace test_support
