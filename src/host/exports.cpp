#include "host/start_stop.h"
#include "host/zb_ovisk.h"
#include "log/zbr_log.h"
#include "platform/guard.h"
#include "stage/stage_data.h"
#include "worker/lights.h"
#include "worker/moves.h"

namespace {

void RunCommand(std::uint32_t command, std::uintptr_t data) {
    switch (command) {
        case OviskCmd_Startup:
            StartModule(data);
            break;
        case OviskCmd_Shutdown:
            StopModule(data);
            break;
        case OviskCmd_Home:
            HomeStage(data);
            break;
        default:
            WriteLine("ZbOvisk::ZbrCmd unhandle cmd=", Decimal{static_cast<std::int32_t>(command)},
                      "\n");
    }
}

}  // namespace

bool OVISK_ZbrCmd(std::uint32_t command, std::uintptr_t data) {
    return Guarded(true, [=] {
        RunCommand(command, data);
        return true;
    });
}

bool ZbOvisk_GetOviskData(OviskData& data) {
    return Guarded(false, [&] {
        CopyStageData(data);
        return true;
    });
}

bool ZbOvisk_GetAndClearLatches(bool* anySwitchLatched, bool* emergencyLatched,
                                bool* lampChangedLatched) {
    return Guarded(false, [=] {
        const Latches latches = TakeLatches();
        *anySwitchLatched = latches.anySwitch;
        *emergencyLatched = latches.emergency;
        *lampChangedLatched = latches.lampChanged;
        return latches.anySwitch || latches.lampChanged;
    });
}

bool ZbOvisk_CncGotoAbsoluteNotifyWorld(double x, double y, double z, CncNotifyCallback callback,
                                        std::intptr_t data) {
    return Guarded(false, [=] { return MoveAbsolute(x, y, z, callback, data); });
}

bool ZbOvisk_SetLight(std::int32_t lamp, std::int32_t value) {
    return Guarded(false, [=] { return SetLight(lamp, value); });
}
