#include "host/homing.h"

#include <atomic>
#include <cstdio>
#include <iostream>
#include <thread>

#include "host/dialog_view.h"
#include "host/interrupt.h"
#include "host/text.h"

namespace host_tool {

namespace {

using namespace std::chrono_literals;

void Print(const DialogView& dialog) {
    std::printf("\n[%s]\n", dialog.caption.c_str());
    if (!dialog.picture.empty()) {
        std::printf("  picture: %s\n", dialog.picture.c_str());
    }
    std::printf("  %s\n  buttons: %s Cancel\n", dialog.text.c_str(),
                dialog.okEnabled ? "OK" : "(OK)");
    std::fflush(stdout);
}

/// Watches the dialog until told to end: prints each change of it, and presses OK if it is to.
void Watch(const std::atomic<bool>& done, bool press) {
    std::optional<DialogView> last;
    while (!done) {
        const std::optional<DialogView> now = FindHomingDialog();
        if (now && now != last) {
            Print(*now);
            if (press && now->okEnabled) {
                std::this_thread::sleep_for(500ms);
                std::printf("  -> OK\n");
                PressHomingButton(Button::Ok);
            }
        }
        last = now;
        if (Interrupted()) {
            PressHomingButton(Button::Cancel);
        }
        std::this_thread::sleep_for(50ms);
    }
}

/// Lets a person press the buttons from the keyboard. Runs on when homing is over, until the next
/// line or the program's end: a read from the keyboard can't be taken back.
void ReadKeyboard() {
    std::printf("keys: o = OK, c = Cancel, x = close box, each with Enter\n");
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line == "o") {
            PressHomingButton(Button::Ok);
        } else if (line == "c") {
            PressHomingButton(Button::Cancel);
        } else if (line == "x") {
            PressHomingButton(Button::CloseBox);
        }
    }
}

/// Shows the position until it has not changed for two seconds. A stage that somebody else keeps
/// moving never stands still; then for two minutes.
void WatchMotion(ModuleLibrary& module) {
    const auto limit = std::chrono::steady_clock::now() + 120s;
    std::string last;
    for (auto still = 0ms; still < 2s && !Interrupted() && std::chrono::steady_clock::now() < limit;
         still += 250ms) {
        const std::string position = PositionText(module.Stage());
        if (position != last) {
            std::printf("%s\n", position.c_str());
            std::fflush(stdout);
            last = position;
            still = 0ms;
        }
        Pause(250ms);
    }
}

}  // namespace

ExitStatus Home(ModuleLibrary& module, bool automatic, Operator who) {
    std::atomic<bool> done{false};
    std::thread watcher([&] { Watch(done, who == Operator::Program); });
    if (who == Operator::Person && DialogNeedsKeyboard()) {
        std::thread(ReadKeyboard).detach();
    }
    module.OVISK_ZbrCmd(OviskCmd_Home, 0);
    done = true;
    watcher.join();
    std::printf("\nthe homing dialog has closed\n");
    if (automatic) {
        WatchMotion(module);
    }
    return Done;
}

}  // namespace host_tool
