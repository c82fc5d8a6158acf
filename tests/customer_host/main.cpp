#include <host/zb_ovisk.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

// What a customer's program does, with each export once. Beside it runs a simulator whose stage
// stands at 12300, -45600, 700 counts.

namespace {

std::atomic<bool> arrived{false};

void NoteArrival(bool, bool error, const McndReply*, std::intptr_t data) {
    arrived = !error && data == 7;
}

OviskData Snapshot() {
    OviskData data;
    ZbOvisk_GetOviskData(data);
    return data;
}

template <typename Condition>
bool Within(int seconds, Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

bool PositionIs(int x, int y, int z) {
    const CposmrReply position = Snapshot().cposmr;
    return position.x == x && position.y == y && position.z == z;
}

bool LampLatchComes() {
    bool anySwitch = false;
    bool emergency = false;
    bool lampChanged = false;
    ZbOvisk_GetAndClearLatches(&anySwitch, &emergency, &lampChanged);
    return lampChanged;
}

/// The step that failed; null when all went well.
const char* UseModule() {
    if (!Within(30, [] { return PositionIs(123, -456, 7); })) {
        return "snapshot";
    }
    if (!ZbOvisk_SetLight(2, 255) || !Within(30, [] { return Snapshot().labr.labr2 == 10000; })) {
        return "lamp";
    }
    if (!Within(30, LampLatchComes)) {
        return "latch";
    }
    if (!ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, NoteArrival, 7) ||
        !Within(30, [] { return arrived.load(); })) {
        return "move";
    }
    return Within(30, [] { return PositionIs(100, 0, 0); }) ? nullptr : "position after the move";
}

}  // namespace

int main() {
    OVISK_ZbrCmd(OviskCmd_Startup, 0);
    const char* const failed = UseModule();
    OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
    std::printf("customer host: %s\n", failed == nullptr ? "all exports work" : failed);
    return failed == nullptr ? 0 : 1;
}
