#include "simulation/actors.h"

#include "simulation/world.h"

namespace simulation {
namespace {

thread_local std::string threadName = Worker;

}  // namespace

World* world = nullptr;

ZbOviskHealth Health() {
    ZbOviskHealth health{};
    health.size = sizeof health;
    Require(world->module->ZbOvisk_ReadHealth(&health), "the health is refused");
    return health;
}

const std::string& ThisThread() {
    return threadName;
}

void NameThisThread(const std::string& name) {
    threadName = name;
}

DWORD WINAPI Actors::Run(LPVOID argument) {
    auto& actor = *static_cast<Actor*>(argument);
    NameThisThread(actor.name);
    actor.play(actor.chance);
    return 0;
}

void Actors::Start(const std::string& name, Chance& chance, std::function<void(Chance&)> play) {
    actors_.push_back(
        std::make_unique<Actor>(Actor{name, Chance(chance.Seed()), std::move(play), nullptr}));
    Actor& actor = *actors_.back();
    actor.thread = CreateThread(nullptr, 0, Run, &actor, 0, nullptr);
}

Actors::Actors(Chance& chance) {
    Start("host", chance, PlayHost);
    Start("mover", chance, PlayMover);
    Start("lighter", chance, PlayLighter);
    Start("homer", chance, PlayHomer);
    Start("operator", chance, PlayOperator);
    Start("visitor", chance, PlayVisitor);
    Start("trouble", chance, PlayTrouble);
    if (world->plan.viewerRuns) {
        Start("viewer", chance, PlayViewer);
    }
}

void Actors::Join() {
    for (const auto& actor : actors_) {
        WaitForSingleObject(actor->thread, INFINITE);
        CloseHandle(actor->thread);
    }
    actors_.clear();
}

void Wait(Chance& chance, std::int64_t least, std::int64_t most) {
    Sleep(static_cast<DWORD>(chance.Between(least, most)));
}

}  // namespace simulation
