#include <host/zb_ovisk_plain.h>
#include <stddef.h>
#include <stdio.h>

/* What a host in plain C does, without callbacks. Beside it runs a simulator whose stage stands at
   12300, -45600, 700 counts. */

_Static_assert(sizeof(bool) == 1, "a flag is one byte");
_Static_assert(sizeof(struct ZbOviskStage) == 220, "the stage's size is part of the interface");
_Static_assert(offsetof(struct ZbOviskStage, switches) == 128, "and so are its places");
_Static_assert(sizeof(struct ZbOviskHealth) == 272, "the health's size is part of the interface");
_Static_assert(offsetof(struct ZbOviskHealth, lastFailure) == 64, "and so are its places");
_Static_assert(offsetof(struct ZbOviskHealth, positionAge) == 160, "");
_Static_assert(offsetof(struct ZbOviskHealth, moveText) == 220, "");

static struct ZbOviskStage stage = {.size = sizeof stage};
static struct ZbOviskHealth health = {.size = sizeof health};

static bool position_is(int32_t x, int32_t y, int32_t z) {
    return stage.xCounts == x && stage.yCounts == y && stage.zCounts == z && !stage.xError;
}

static bool shows_first_position(void) {
    return position_is(12300, -45600, 700) && stage.x == 123 && health.positionAge < 10000;
}

static bool shows_lamp(void) {
    return stage.lamps[1] == 10000 && stage.lampChanged;
}

static bool shows_arrival(void) {
    return health.move == ZBOVISK_MOVE_ENDED_WELL && health.movesEnded == 1 &&
           health.moveTarget[0] == 10000 && position_is(10000, 0, 0);
}

/* Reads until both records show it; the worker's exchanges are the clock. */
static bool comes(bool (*shown)(void)) {
    const uint64_t most = 1000;
    if (!ZbOvisk_ReadHealth(&health)) {
        return false;
    }
    for (const uint64_t first = health.exchangesGood + health.exchangesFailed;
         health.exchangesGood + health.exchangesFailed - first < most;) {
        if (!ZbOvisk_ReadStage(&stage) || !ZbOvisk_ReadHealth(&health)) {
            return false;
        }
        if (shown()) {
            return true;
        }
    }
    return false;
}

static bool takes_lamp_latch(void) {
    bool any = true;
    bool emergency = true;
    bool lamp = false;
    return ZbOvisk_GetAndClearLatches(&any, &emergency, &lamp) && !any && !emergency && lamp;
}

/* The step that failed, or null. */
static const char* use_module(void) {
    if (!comes(shows_first_position)) {
        return "position";
    }
    if (!ZbOvisk_SetLight(2, 255) || !comes(shows_lamp)) {
        return "lamp";
    }
    if (!takes_lamp_latch()) {
        return "latch";
    }
    if (!ZbOvisk_CncGotoAbsoluteNotifyWorld(0.01, 0, 0, NULL, 0) || !comes(shows_arrival)) {
        return "move";
    }
    return health.worker == ZBOVISK_WORKER_RUNS && health.link == ZBOVISK_LINK_ANSWERS ? NULL
                                                                                       : "health";
}

int main(void) {
    OVISK_ZbrCmd(ZBOVISK_STARTUP, 0);
    const char* failed = use_module();
    OVISK_ZbrCmd(ZBOVISK_SHUTDOWN, 0);
    if (failed == NULL &&
        (!ZbOvisk_ReadHealth(&health) || health.worker != ZBOVISK_WORKER_STOPPED)) {
        failed = "stop";
    }
    printf("plain host: %s\n", failed == NULL ? "all exports work" : failed);
    return failed == NULL ? 0 : 1;
}
