#include "host/actions.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <optional>

#include "host/interrupt.h"
#include "host/text.h"

namespace host_tool {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

enum class MoveEnd { Pending, Good, Bad };

/// Outlives the call that waits for it: a notice may come after the tool has given up.
std::atomic<MoveEnd> moveEnd{MoveEnd::Pending};

void NoteEnd(bool, bool error, const McndReply*, std::intptr_t) {
    moveEnd = error ? MoveEnd::Bad : MoveEnd::Good;
}

OviskData Read(ModuleLibrary& module) {
    OviskData data;
    module.ZbOvisk_GetOviskData(data);
    return data;
}

/// The lamp's field of the stage data; nothing for lamps that it does not hold.
std::optional<std::int32_t> ShownLamp(const LabrReply& lamps, int lamp) {
    switch (lamp) {
        case 1:
            return lamps.labr1;
        case 2:
            return lamps.labr2;
        case 4:
            return lamps.labr4;
        case 5:
            return lamps.labr5;
        case 6:
            return lamps.labr6;
        case 7:
            return lamps.labr7;
        default:
            return std::nullopt;
    }
}

}  // namespace

ExitStatus GoTo(ModuleLibrary& module, const MoveTarget& target) {
    moveEnd = MoveEnd::Pending;
    if (!module.ZbOvisk_CncGotoAbsoluteNotifyWorld(target.x, target.y, target.z, NoteEnd, 0)) {
        std::printf("the move was refused\n");
        return Refused;
    }
    const auto end = Clock::now() + target.limit;
    while (moveEnd == MoveEnd::Pending && Clock::now() < end && !Interrupted()) {
        std::printf("%s\n", PositionText(Read(module).cposmr).c_str());
        std::fflush(stdout);
        Pause(200ms);
    }
    switch (moveEnd.load()) {
        case MoveEnd::Good:
            Pause(300ms);  // The notice can overtake the last position poll.
            std::printf("arrived: %s\n", PositionText(Read(module).cposmr).c_str());
            return Done;
        case MoveEnd::Bad:
            std::printf("the move failed at %s\n", PositionText(Read(module).cposmr).c_str());
            return MoveFailed;
        default:
            std::printf("no notice of the end of the move\n");
            return NoNotice;
    }
}

ExitStatus SetLight(ModuleLibrary& module, int lamp, int value) {
    if (!module.ZbOvisk_SetLight(lamp, value)) {
        std::printf("there is no lamp %d\n", lamp);
        return Refused;
    }
    const auto wanted =
        static_cast<std::int32_t>(std::lround(std::clamp(value, 0, 255) / 255.0 * 10000.0));
    const auto end = Clock::now() + 15s;
    while (Clock::now() < end && !Interrupted()) {
        Pause(100ms);
        const std::optional<std::int32_t> shown = ShownLamp(Read(module).labr, lamp);
        if (!shown) {
            Pause(1s);
            std::printf("lamp %d was set; the stage data does not show it\n", lamp);
            return Done;
        }
        if (*shown == wanted) {
            std::printf("lamp %d shows %d of 10000\n", lamp, static_cast<int>(*shown));
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
