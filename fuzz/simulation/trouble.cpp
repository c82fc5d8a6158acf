#include <array>

#include "controller/log_tap.h"
#include "simulation/actors.h"
#include "simulation/world.h"

namespace simulation {
namespace {

constexpr std::array Switches{simulator::EmergencySwitch, simulator::YSwitch, simulator::DataSwitch,
                              simulator::FootSwitch, simulator::MeasMode};

simulator::AxisName AnyAxis(Chance& chance) {
    return static_cast<simulator::AxisName>(chance.Between(0, simulator::AxisCount - 1));
}

void Count(Fault fault) {
    ++world->report.faults[static_cast<std::size_t>(fault)];
}

void MakeTrouble(Chance& chance) {
    switch (chance.Between(0, 3)) {
        case 0:
            Count(Fault::Cable);
            world->wire.PlugCable(false);
            Wait(chance, 5, chance.OneIn(2) ? 20'000 : 200);
            world->wire.PlugCable(true);
            break;
        case 1:
            Count(Fault::Reset);
            world->wire.Reset(Milliseconds(chance.Between(100, 5000)));
            break;
        default: {
            Count(Fault::AxisError);
            const simulator::AxisName axis = AnyAxis(chance);
            const std::int64_t code = chance.Between(0, 199);
            world->wire.Stage().At(axis).Settings().error =
                (code < 100 ? "E" : "F") + std::to_string(code % 100);
            Wait(chance, 50, 10'000);
            world->wire.Stage().At(axis).Settings().error.clear();
        }
    }
}

}  // namespace

void PlayVisitor(Chance& chance) {
    constexpr std::array Outcomes{simulator::HomeOutcome::Ok, simulator::HomeOutcome::Ok,
                                  simulator::HomeOutcome::Ok, simulator::HomeOutcome::Refuse,
                                  simulator::HomeOutcome::Fail};
    while (!world->stopping && !world->calm) {
        Wait(chance, 50, 10'000);
        switch (chance.Between(0, 5)) {
            case 0: {
                const auto value = static_cast<std::int32_t>(chance.Between(0, 10'000));
                world->wire.Stage().SetLamp(static_cast<int>(chance.Between(1, 7)), value);
                break;
            }
            case 1:
                world->wire.Stage().Cancel();
                break;
            case 2:
                world->wire.Stage().At(AnyAxis(chance)).Settings().homeOutcome =
                    chance.Of(Outcomes);
                break;
            default: {
                const int number = chance.Of(Switches);
                const auto value = static_cast<std::int32_t>(chance.OneIn(8) ? 2 : 1);
                world->wire.Stage().SetSwitch(number, value);
                Wait(chance, 10, 2000);
                world->wire.Stage().SetSwitch(number, 0);
            }
        }
    }
}

void PlayTrouble(Chance& chance) {
    if (world->plan.percent == 0) {
        return;
    }
    while (!world->stopping && !world->calm) {
        Wait(chance, 1000, 600'000 / world->plan.percent);
        if (!world->stopping && !world->calm) {
            MakeTrouble(chance);
        }
    }
}

void PlayViewer(Chance& chance) {
    test_support::LogBlock block;
    while (!world->stopping) {
        Wait(chance, 1, 500);
        world->trace.Note("log", block.Take());
    }
}

}  // namespace simulation
