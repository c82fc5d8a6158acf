#include <limits>

#include "simulation/actors.h"
#include "simulation/world.h"

namespace simulation {
namespace {

constexpr double CountsPerUnit = 1'000'000;

void ReadRecord() {
    OviskData data;
    world->mirror.BeginSnapshot();
    world->module->ZbOvisk_GetOviskData(data);
    world->mirror.EndSnapshot(data, world->wire.UnderWay());
    ++world->report.snapshots;
}

void ReadHealth() {
    Wire& wire = world->wire;
    world->moves.ReadingBegins();
    world->health.ReadingBegins(wire.Newest(), wire.NewestIsWorkers());
    const ZbOviskHealth health = HealthNow();
    if (world->portIsGone) {
        return;
    }
    world->health.ReadingEnds(health, wire.Newest(), wire.NewestIsWorkers());
    world->moves.ReadingEnds(health);
    ++world->report.readings;
}

void ReadLatches() {
    LatchResult result;
    world->mirror.BeginTake();
    const bool any = world->module->ZbOvisk_GetAndClearLatches(&result.anySwitch, &result.emergency,
                                                               &result.lampChanged);
    world->mirror.EndTake(result, world->wire.UnderWay());
    Require(any == (result.anySwitch || result.lampChanged), "the latches' result");
    world->report.latches += any ? 1 : 0;
}

void OnMoved(bool finished, bool error, const McndReply* reply, std::intptr_t data);

std::string SignedText(std::int64_t count) {
    return (count < 0 ? "" : "+") + std::to_string(count);
}

/// Starts a move to somewhere, mostly within the limits; its number.
std::size_t StartMove(Chance& chance) {
    std::array<double, 3> units{};
    std::string request = "@MMVAL=";
    for (double& unit : units) {
        const std::int64_t reach = chance.OneIn(20) ? 2'100'000 : 1'900'000;
        const std::int64_t count = chance.Between(-reach, reach);
        unit = static_cast<double>(count) / CountsPerUnit;
        request += (request.back() == '=' ? "" : ",") + SignedText(count);
    }
    request += "\r\n";
    const bool wantsNotice = !chance.OneIn(10);
    const std::string& thread = ThisThread();
    const ZbOviskHealth before = Health();
    const std::size_t number = world->moves.Asked(thread, request, wantsNotice, before.linkLosses);
    world->trace.Note(thread, "move " + std::to_string(number));
    const bool accepted = world->module->ZbOvisk_CncGotoAbsoluteNotifyWorld(
        units[0], units[1], units[2], wantsNotice ? OnMoved : nullptr,
        static_cast<std::intptr_t>(number));
    const ZbOviskHealth after = Health();
    if (before.link == ZBOVISK_LINK_LOST && after.link == before.link &&
        after.linkLosses == before.linkLosses) {
        Require(!accepted && !world->moves.IsSent(number), "a move is sent on a lost line");
    }
    const Exchange& exchange = world->wire.LastOf(thread);
    const bool sent = exchange.request == request;
    world->moves.Returned(number, accepted, sent ? exchange.Text() : "");
    return number;
}

void OnMoved(bool finished, bool error, const McndReply* reply, std::intptr_t data) {
    const auto number = static_cast<std::size_t>(data);
    const std::string wire = world->wire.LastOf(Worker).Text();
    world->trace.Note(ThisThread(), "end of move " + std::to_string(number));
    Require(ThisThread() == Worker, "the end of a move is told by another thread");
    if (world->plan.bothKeys && error && !MotionIsBad(*reply)) {
        world->moves.ToldLost(number, Health().linkLosses);
    } else {
        world->moves.Told(number, finished, error, *reply, wire);
    }
    // A host may go on from here.
    static Chance chance(world->plan.chance);
    if (!world->stopping && chance.OneIn(6)) {
        StartMove(chance);
    }
    if (chance.OneIn(6)) {
        Sleep(static_cast<DWORD>(chance.Between(0, 300)));
    }
}

}  // namespace

ZbOviskHealth HealthNow() {
    ZbOviskHealth health{};
    health.size = sizeof health;
    Require(world->module->ZbOvisk_ReadHealth(&health), "the health is refused");
    return health;
}

void PlayHost(Chance& chance) {
    while (!world->stopping) {
        chance.OneIn(4) ? ReadLatches() : ReadRecord();
        ReadHealth();
        Wait(chance, 1, chance.OneIn(4) ? 2000 : 300);
    }
    ReadRecord();
}

void PlayMover(Chance& chance) {
    while (!world->stopping) {
        Wait(chance, 100, 20'000);
        if (chance.OneIn(30)) {
            constexpr double Far = 3000;
            const double wrong = chance.OneIn(2) ? Far : std::numeric_limits<double>::quiet_NaN();
            const bool accepted =
                world->module->ZbOvisk_CncGotoAbsoluteNotifyWorld(0, wrong, 0, OnMoved, 1'000'000);
            Require(!accepted, "a move to nowhere is accepted");
        }
        const std::size_t number = StartMove(chance);
        // Mostly until the end is told, sometimes not: then the next one takes over.
        for (auto left = chance.OneIn(4) ? 0 : 200; left > 0 && !world->moves.IsTold(number);
             --left) {
            Wait(chance, 100, 100);
        }
    }
}

void PlayLighter(Chance& chance) {
    while (!world->stopping) {
        Wait(chance, 10, 15'000);
        for (auto count = chance.Between(1, 6); count > 0; --count) {
            const auto lamp = static_cast<std::int32_t>(chance.Between(-1, 11));
            const auto value = static_cast<std::int32_t>(chance.Between(-20, 300));
            const bool exists = lamp >= 0 && lamp <= 10;
            if (exists) {
                world->lamps.Posted(lamp, value);
                ++world->report.lamps;
            }
            Require(world->module->ZbOvisk_SetLight(lamp, value) == exists, "a lamp's result");
            Wait(chance, 0, chance.OneIn(3) ? 120 : 0);
        }
    }
}

}  // namespace simulation
