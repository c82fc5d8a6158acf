#include "host/start_stop.h"
#include "host/zb_ovisk.h"
#include "log/log_line.h"
#include "stage/stage_data.h"
#include "worker/lights.h"
#include "worker/moves.h"

namespace {

/// Runs the body of an export. No exception ever crosses into the host.
template <typename Body>
bool Guarded(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return false;
    }
}

void RunCommand(std::uint32_t command, std::uintptr_t data) {
    switch (command) {
        case OviskCmd_Startup:
            return StartModule(data);
        case OviskCmd_Shutdown:
            return StopModule(data);
        case OviskCmd_Home:
            return HomeStage(data);
        default:
            return WriteLine(
                "ZbOvisk::ZbrCmd unhandle cmd=", Decimal{static_cast<std::int32_t>(command)}, "\n");
    }
}

}  // namespace

bool OVISK_ZbrCmd(std::uint32_t command, std::uintptr_t data) {
    Guarded([=] {
        RunCommand(command, data);
        return true;
    });
    return true;
}

bool ZbOvisk_GetOviskData(OviskData& data) {
    return Guarded([&] {
        CopyStageData(data);
        return true;
    });
}

bool ZbOvisk_GetAndClearLatches(bool* anySwitchLatched, bool* emergencyLatched,
                                bool* lampChangedLatched) {
    return Guarded([=] {
        const Latches latches = TakeLatches();
        *anySwitchLatched = latches.anySwitch;
        *emergencyLatched = latches.emergency;
        *lampChangedLatched = latches.lampChanged;
        return latches.anySwitch || latches.lampChanged;
    });
}

bool ZbOvisk_CncGotoAbsoluteNotifyWorld(double x, double y, double z, CncNotifyCallback callback,
                                        std::intptr_t data) {
    return Guarded([=] { return MoveAbsolute(x, y, z, callback, data); });
}

bool ZbOvisk_SetLight(std::int32_t lamp, std::int32_t value) {
    return Guarded([=] { return SetLight(lamp, value); });
}
