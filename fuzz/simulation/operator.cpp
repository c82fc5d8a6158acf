#include "native/headless.h"
#include "resources/resource_ids.h"
#include "simulation/actors.h"
#include "simulation/world.h"

namespace simulation {
namespace {

constexpr double Far = 100'000;

/// The operator's hand brings the axis away from its origin, or past it.
void MoveByHand(simulator::AxisName name, bool past) {
    simulator::Axis& axis = world->wire.Stage().At(name);
    const double way = axis.Origin() - axis.Counts();
    axis.HandMove(past ? way + (way < 0 ? -Far / 5 : Far / 5) : way - Far);
}

void Press(HWND window, int button) {
    world->trace.Note(ThisThread(), "presses " + std::to_string(button));
    if (button == IDOK) {
        world->homing.PressedOk(virtual_time::Elapsed());
    } else {
        world->homing.PressedCancel(button == IDCANCEL);
    }
    PostMessageW(window, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

/// An OK on a lost line starts nothing, then or later.
void PressOk(HWND window) {
    const ZbOviskHealth before = Health();
    Press(window, IDOK);
    if (before.link != ZBOVISK_LINK_LOST) {
        return;
    }
    Sleep(static_cast<DWORD>(50 + 10 * world->plan.LongestPause() / Milliseconds(1)));
    const ZbOviskHealth after = Health();
    if (after.link == ZBOVISK_LINK_LOST && after.linkLosses == before.linkLosses) {
        world->homing.OkWasRefused();
    }
}

void PressCloseBox(HWND window) {
    world->trace.Note(ThisThread(), "closes");
    world->homing.PressedCancel(false);
    PostMessageW(window, WM_CLOSE, 0, 0);
}

void Handle(const headless::DialogView& dialog, Chance& chance) {
    const bool leaves = chance.OneIn(world->stopping ? 2 : 8);
    if (leaves) {
        chance.OneIn(4) ? PressCloseBox(dialog.window) : Press(dialog.window, IDCANCEL);
        return;
    }
    if (dialog.resource == IDD_AUTO_HOMING) {
        PressOk(dialog.window);
        return;
    }
    const std::string& text = dialog.Find(IDC_HOMING_TEXT)->text;
    const bool x = text.find("left limit") != std::string::npos ||
                   text.find("to the right") != std::string::npos;
    const bool prompts = dialog.Find(IDOK)->enabled;
    MoveByHand(x ? simulator::AxisName::X : simulator::AxisName::Y, !prompts);
    if (prompts || chance.OneIn(10)) {
        PressOk(dialog.window);
    }
}

/// Comes back at an awkward moment: just as the controller has finished X.
void WaitForX(Chance& chance) {
    const auto wait = [](simulator::HomeStatus status) {
        for (int left = 200; left > 0; --left) {
            if (world->wire.Stage().At(simulator::AxisName::X).Home() == status) {
                return;
            }
            Sleep(50);
        }
    };
    wait(simulator::HomeStatus::UnderWay);
    wait(simulator::HomeStatus::Finished);
    Wait(chance, 0, 200);
}

}  // namespace

void PlayOperator(Chance& chance) {
    while (!world->stopping || world->homing.IsOpen()) {
        Wait(chance, 1, chance.OneIn(3) ? 400 : 4000);
        for (const headless::DialogView& dialog : headless::OpenDialogs()) {
            if (dialog.visible) {
                Handle(dialog, chance);
            }
        }
    }
}

void PlayHomer(Chance& chance) {
    constexpr std::int64_t Settled = 60'000;
    bool settled = true;
    while (!world->stopping) {
        const bool soon = chance.OneIn(3);
        if (soon && chance.OneIn(2)) {
            WaitForX(chance);
        } else if (soon) {
            Wait(chance, 0, 6000);
        } else {
            Wait(chance, Settled, 4 * Settled);
        }
        settled = !soon;
        if (world->stopping) {
            break;
        }
        if (settled) {
            world->homing.Finish();
        }
        world->trace.Note(ThisThread(), "homes");
        world->homing.Began(virtual_time::Elapsed(), settled);
        world->module->OVISK_ZbrCmd(OviskCmd_Home, 0);
        world->homing.Ended(virtual_time::Elapsed());
        world->homing.CheckHealth(HealthNow());
        world->trace.Note(ThisThread(), "is back");
    }
}

}  // namespace simulation
