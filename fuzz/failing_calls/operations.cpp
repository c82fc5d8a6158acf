#include "failing_calls/operations.h"

#include <iterator>
#include <limits>

namespace failing {
namespace {

using namespace std::chrono_literals;

void Load(World& world) {
    world.Load();
}

void LoadAndStart(World& world) {
    world.Load();
    world.Start();
}

/// Started, and the record is the stage.
void Run(World& world) {
    LoadAndStart(world);
    Require(world.IsLive(), "not alive before anything has failed");
}

void Start(World& world) {
    world.Start();
    Pass(1s);
}

void AwaitPosition(World& world) {
    world.IsLive();
}

void Poll(World&) {
    Pass(4s);
}

/// The controller is silent for so long that the line is lost, and talks again. What it says late
/// is read away.
void LoseLine(World& world) {
    world.line.SetMute(true);
    Pass(11s);
    world.line.SetMute(false);
    world.line.SayLate(">CPOSMR=7,7,7\r\n");
    Pass(9s);
}

/// A read that fails leaves the host's record alone.
void ReadRecord(World& world) {
    OviskData data;
    data.cposmr.x = -1;
    data.cposmr.zErrorText = "the host's own";
    if (!world.Module().ZbOvisk_GetOviskData(data)) {
        Require(Result().memoryFailed, "the record is refused");
        Require(data.cposmr.x == -1 && data.cposmr.zErrorText == "the host's own", "half a record");
    }
}

/// They make no call that could fail.
void ReadPlain(World& world) {
    ZbOviskStage stage{};
    stage.size = sizeof stage;
    ZbOviskHealth health{};
    health.size = sizeof health;
    const std::uint32_t calls = Result().calls;
    Require(world.Module().ZbOvisk_ReadStage(&stage), "the stage is refused");
    Require(world.Module().ZbOvisk_ReadHealth(&health), "the health is refused");
    Require(Result().calls == calls, "a plain reading makes a call that can fail");
    Require(stage.zError && stage.zErrorText[0] == 'E', "the stage is not the controller's");
    Require(health.link == ZBOVISK_LINK_ANSWERS && health.worker == ZBOVISK_WORKER_RUNS,
            "the health is not that of a good line");
}

/// A lamp that is accepted is set, unless the line or the memory fails; one that is refused is not.
void SetLamp(World& world) {
    world.line.Allow(LampRequest);
    if (!world.Module().ZbOvisk_SetLight(3, 128)) {
        Require(Result().memoryFailed, "a lamp is refused");
        world.isLampRefused = true;
        Pass(2s);
        Require(world.line.Awaits(LampRequest), "a lamp that was refused is set");
    }
}

void SetLampAndWait(World& world) {
    SetLamp(world);
    Pass(2s);
}

int movesTold = 0;

void CountEnd(bool, bool, const McndReply*, std::intptr_t data) {
    Require(data == 77, "the end of a move that nobody asked for");
    Require(++movesTold == 1, "the end of a move is told twice");
}

/// Moves, and waits for the end. A move that answers true was sent.
void MoveTo(World& world, bool& accepted) {
    const std::string request = "@MMVAL=+100000,-200000,+0\r\n";
    world.line.Allow(request);
    world.line.AllowQueries("@MCND?\r\n");
    accepted = world.Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.1, -0.2, 0, CountEnd, 77);
    Require(!accepted || !world.line.Awaits(request), "a move is accepted and not sent");
    WaitFor([] { return movesTold != 0; }, 6s);
    Require(movesTold == 0 || accepted, "the end of a refused move is told");
}

void Move(World& world) {
    bool accepted = false;
    MoveTo(world, accepted);
}

void MoveNowhere(World& world) {
    const double no = std::numeric_limits<double>::quiet_NaN();
    for (const double x : {3000.0, no}) {
        const bool accepted =
            world.Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(x, 0, 0, CountEnd, 77);
        Require(!accepted, "a move to nowhere is accepted");
    }
    world.line.Controller().Refuse("MMVAL", "E3");
    Move(world);
    world.line.Controller().Refuse("MMVAL", "");
}

void RunAutomatic(World& world) {
    world.startData = 1;
    Run(world);
}

void HomeToTheEnd(World& world) {
    Home(world, false);
}

void HomeAndCancel(World& world) {
    Home(world, true);
}

void ClearLatches(World& world) {
    world.line.Stage().SetSwitch(simulator::FootSwitch, 1);
    Pass(2s);
    world.line.Stage().SetSwitch(simulator::FootSwitch, 0);
    bool any = false;
    bool emergency = false;
    bool lamps = false;
    world.Module().ZbOvisk_GetAndClearLatches(&any, &emergency, &lamps);
    Require(!emergency, "a latch of a switch that nobody pressed");
}

/// In one, since the stop has its bound also when there is no worker to wait for.
void StartAndStop(World& world) {
    Start(world);
    Require(world.Stop() <= LongestStop, "the stop takes too long");
}

void RunAndStop(World& world) {
    Run(world);
    world.StopForGood();
}

void Unload(World& world) {
    world.Unload();
}

constexpr Operation Table[] = {
    {"load", [](World&) {}, Load},
    {"start", Load, Start},
    {"start with the panel", Load, Start, true},
    {"second start", Run, Start, true},
    {"first position", LoadAndStart, AwaitPosition},
    {"polling", Run, Poll},
    {"record", Run, ReadRecord},
    {"plain records", Run, ReadPlain},
    {"latches", Run, ClearLatches},
    {"lamp", Run, SetLampAndWait},
    {"lamp before the start", Load, SetLamp},
    {"move", Run, Move},
    {"refused move", Run, MoveNowhere},
    {"manual homing", Run, HomeToTheEnd},
    {"cancelled homing", Run, HomeAndCancel},
    {"automatic homing", RunAutomatic, HomeToTheEnd},
    {"panel", Run, UsePanel, true},
    {"start and stop", Load, StartAndStop},
    {"unload", RunAndStop, Unload},
    {"polling, both keys", Run, Poll, false, true},
    {"lost line, both keys", Run, LoseLine, false, true},
    {"move, both keys", Run, Move, false, true},
    {"homing, both keys", RunAutomatic, HomeToTheEnd, false, true},
};

}  // namespace

std::span<const Operation> Operations() {
    return Table;
}

}  // namespace failing
