#include "simulation/life.h"

#include <optional>

#include "simulation/actors.h"
#include "simulation/world.h"
#include "support/machine.h"

namespace simulation {
namespace {

constexpr unsigned PortNumber = 3;

Time ElapsedSince(Time start) {
    return virtual_time::Elapsed() - start;
}

void SleepUntil(Time time) {
    const auto left = std::chrono::ceil<Milliseconds>(time - virtual_time::Elapsed());
    Sleep(static_cast<DWORD>(std::max(left, Milliseconds(0)).count()));
}

void StartModule() {
    world->starts = true;
    world->module->OVISK_ZbrCmd(OviskCmd_Startup, world->plan.automatic ? 1 : 0);
    world->starts = false;
}

/// How long the stop took.
Time StopModule() {
    const Time start = virtual_time::Elapsed();
    world->module->OVISK_ZbrCmd(OviskCmd_Shutdown, 0);
    return ElapsedSince(start);
}

/// What the machine's pauses may add to a call that is bounded by its own waits.
Time Slack() {
    return Milliseconds(300) + 20 * world->plan.LongestPause();
}

std::string Record() {
    OviskData data;
    world->module->ZbOvisk_GetOviskData(data);
    return Shown(data);
}

/// From a good line on: the record lives again in time, without anybody's help.
void ExpectReturn() {
    const Time start = virtual_time::Elapsed();
    const std::uint64_t since = Health().exchangesGood;
    const auto isBack = [&] {
        const ZbOviskHealth health = Health();
        return health.link == ZBOVISK_LINK_ANSWERS && health.exchangesGood > since &&
               health.positionAge <=
                   static_cast<std::uint64_t>(ElapsedSince(start) / Milliseconds(1));
    };
    while (!isBack()) {
        Require(ElapsedSince(start) <= Seconds(10) + Slack(),
                "the line is back, the record is not");
        Sleep(10);
    }
    const double took = std::chrono::duration<double>(ElapsedSince(start)).count();
    world->report.longestReturn = std::max(world->report.longestReturn, took);
}

/// A last time the line goes away, mostly for long enough to be lost.
void PullCableOnce(Chance& chance) {
    world->wire.PlugCable(false);
    Sleep(static_cast<DWORD>(chance.Between(0, 60'000)));
    world->wire.PlugCable(true);
    ExpectReturn();
}

/// The faults stop: everything has to come right by itself.
void ComeToRest(Actors& actors, Chance& chance) {
    world->calm = true;
    world->trace.Note("main", "calm");
    Sleep(25'000);  // Until the cable is in again and the axes' errors are over.
    SleepUntil(world->wire.StopFaults());
    if (world->plan.bothKeys) {
        ExpectReturn();
        PullCableOnce(chance);
    }
    world->wire.ExpectLife();
    Sleep(30'000);
    Require(world->wire.PollsSinceCalm() >= 2, "no polls on a good line");
    world->stopping = true;
    actors.Join();
    Sleep(60'000);
    world->moves.Finish();
    world->lamps.Finish();
    world->homing.Finish();
}

/// The record shows the stage as it is.
void CompareWithStage() {
    simulator::StageModel& stage = world->wire.Stage();
    OviskData data;
    world->module->ZbOvisk_GetOviskData(data);
    const auto axis = [&](simulator::AxisName name) {
        return std::lround(stage.At(name).Counts() / world->plan.scaleFactor);
    };
    using simulator::AxisName;
    Require(data.cposmr.x == axis(AxisName::X) && data.cposmr.y == axis(AxisName::Y) &&
                data.cposmr.z == axis(AxisName::Z),
            "the record's position is not the stage's", Shown(data));
    Require(data.labr.labr1 == stage.Lamp(1) && data.labr.labr7 == stage.Lamp(7) &&
                data.sswc.MEAS_MODE == stage.Switch(simulator::MeasMode),
            "the record's lamps and switches are not the stage's", Shown(data));
}

/// Stops the module. From the moment that the stop is back nothing may be sent, whatever the worker
/// had under way, also when the line comes back; and the worker ends.
void StopForGood() {
    const Time bound = Seconds(2) + Slack();
    const Time took = StopModule();
    Require(took <= bound, "the stop takes too long", std::to_string(took.count()));
    world->wire.WorkerMustBeSilent();
    Sleep(10'000);
    const std::string record = Record();
    world->wire.PlugCable(true);
    Sleep(60'000);
    Require(Record() == record, "the record changes after the stop");
    Require(StopModule() < Seconds(2), "the worker does not end");
    const ZbOviskHealth health = HealthNow();
    Require(health.worker == ZBOVISK_WORKER_STOPPED && health.movesEnded == health.movesAccepted,
            "the health does not show the stop");
}

void StartOnceMore() {
    const std::uint64_t before = world->wire.Exchanges();
    const std::uint64_t sent = Health().link == ZBOVISK_LINK_LOST ? 0 : 1;
    StartModule();
    Sleep(10'000);
    Require(world->wire.Exchanges() == before + sent, "a second start does more than it may");
    Require(StopModule() <= Slack(), "the stop of a stopped module takes its time");
}

void LiveWith(std::optional<LocalPort>& port, Chance& chance) {
    const Plan& plan = world->plan;
    StartModule();
    if (plan.portComesLate) {
        Sleep(static_cast<DWORD>(chance.Between(10, 10'000)));
        port.emplace(PortNumber, world->wire);
        Sleep(10'000);
    }
    Actors actors(chance);
    SleepUntil(plan.length);
    if (plan.endsInTrouble) {
        if (plan.portIsPulled) {
            world->portIsGone = true;
            port.reset();
        } else if (chance.OneIn(2)) {
            world->wire.PlugCable(false);
        }
        world->calm = true;
        world->stopping = true;
        StopForGood();
        actors.Join();
        if (!plan.portIsPulled) {
            StartOnceMore();
        }
        return;
    }
    if (chance.OneIn(2)) {
        StartModule();
    }
    ComeToRest(actors, chance);
    CompareWithStage();
    StopForGood();
    if (chance.OneIn(2)) {
        StartOnceMore();
    }
}

}  // namespace

void Live(const Plan& plan, Report& report, std::FILE* trace) {
    virtual_time::Start(plan.clock);
    NameThisThread("main");
    test_support::WriteSettings(plan.settings);
    readsStrictly = plan.bothKeys;
    World life(plan, report, trace);
    world = &life;
    std::optional<LocalPort> port;
    if (!plan.portComesLate) {
        port.emplace(PortNumber, life.wire);
    }
    {
        host_tool::ModuleLibrary module(OVISK_LIBRARY);
        life.module = &module;
        Chance chance(plan.chance + 1);
        LiveWith(port, chance);
        const ZbOviskHealth health = Health();
        report.losses = health.linkLosses;
        report.returns = health.linkLosses - (health.link == ZBOVISK_LINK_LOST ? 1 : 0);
        Sleep(1000);
    }
    report.seconds = std::chrono::duration<double>(virtual_time::Elapsed()).count();
    report.digest = life.trace.Digest() ^ virtual_time::Fingerprint();
    report.bothKeys = plan.bothKeys;
    report.over = true;
}

}  // namespace simulation
