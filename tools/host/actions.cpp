#include "host/actions.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "host/interrupt.h"

namespace host_tool {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

bool IsShown(int lamp) {
    return lamp >= 1 && lamp <= 7 && lamp != 3;
}

}  // namespace

ExitStatus SetLight(ModuleLibrary& module, int lamp, int value) {
    if (!module.ZbOvisk_SetLight(lamp, value)) {
        std::printf("there is no lamp %d\n", lamp);
        return Refused;
    }
    if (!IsShown(lamp)) {
        Pause(1s);
        std::printf("lamp %d was set; the stage data does not show it\n", lamp);
        return Done;
    }
    const auto wanted =
        static_cast<std::int32_t>(std::lround(std::clamp(value, 0, 255) / 255.0 * 10000.0));
    const auto end = Clock::now() + 15s;
    while (Clock::now() < end && !Interrupted()) {
        Pause(100ms);
        if (module.Stage().lamps[lamp - 1] == wanted) {
            std::printf("lamp %d shows %d of 10000\n", lamp, static_cast<int>(wanted));
            return Done;
        }
    }
    std::printf("lamp %d does not show the value\n", lamp);
    return NotSeen;
}

ExitStatus ShowLatches(ModuleLibrary& module) {
    Pause(2s);
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    module.ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lampChanged);
    const auto yesNo = [](bool latch) { return latch ? "yes" : "no"; };
    std::printf("switch %s, emergency %s, lamps %s\n", yesNo(anySwitch), yesNo(emergency),
                yesNo(lampChanged));
    return Done;
}

}  // namespace host_tool
