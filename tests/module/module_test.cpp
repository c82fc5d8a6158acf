#include "module/module_test.h"

#include "support/machine.h"

namespace test_support {

ModuleTest::ModuleTest() {
    RemoveSettings();
}

ModuleTest::~ModuleTest() {
    if (started_) {
        StopWhole();
    }
}

void ModuleTest::StopWhole() {
    Stop();
    // Wakes a worker that waits for longer than a test lasts.
    Module().ZbOvisk_SetLight(0, 0);
    // A worker that is inside long exchanges outlives the bounded wait; each further wait is
    // bounded too. The second one that ends early has seen the worker finish.
    EXPECT_TRUE(Eventually([this] {
        const ULONGLONG start = GetTickCount64();
        Module().OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
        return GetTickCount64() - start < 1500;
    }));
}

void ModuleTest::Unload() {
    StopWhole();
    started_ = false;
    module_.reset();
}

void ModuleTest::UnloadAtOnce() {
    started_ = false;
    module_.reset();
}

bool ModuleTest::IsLoaded() {
    return LibraryIsLoaded(OVISK_LIBRARY);
}

void ModuleTest::Load(const std::string& settingsLines) {
    WriteSettings("[Ovisk]\n" + settingsLines);
    module_ = std::make_unique<host_tool::ModuleLibrary>(OVISK_LIBRARY);
}

void ModuleTest::Start(std::uintptr_t data) {
    started_ = true;
    EXPECT_TRUE(Module().OVISK_ZbrCmd(OviskCmd_Startup, data));
}

void ModuleTest::Stop() {
    EXPECT_TRUE(Module().OVISK_ZbrCmd(OviskCmd_Shutdown, 0));
}

OviskData ModuleTest::Snapshot() {
    OviskData data;
    EXPECT_TRUE(Module().ZbOvisk_GetOviskData(data));
    return data;
}

bool ModuleTest::SeesPosition(int x, int y, int z) {
    return Eventually([=, this] {
        const OviskData data = Snapshot();
        return data.cposmr.x == x && data.cposmr.y == y && data.cposmr.z == z;
    });
}

ZbOviskStage ModuleTest::Stage() {
    ZbOviskStage stage{};
    stage.size = sizeof stage;
    EXPECT_TRUE(Module().ZbOvisk_ReadStage(&stage));
    return stage;
}

ZbOviskHealth ModuleTest::Health() {
    ZbOviskHealth health{};
    health.size = sizeof health;
    EXPECT_TRUE(Module().ZbOvisk_ReadHealth(&health));
    return health;
}

}  // namespace test_support
