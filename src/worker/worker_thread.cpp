#include "worker/worker_thread.h"

#include <utility>

#include "homing/automatic_homing.h"
#include "homing/manual_homing.h"
#include "link/command_queue.h"
#include "link/line_gate.h"
#include "replies/queries.h"
#include "settings/settings.h"
#include "stage/stage_data.h"
#include "worker/line_mending.h"
#include "worker/moves.h"
#include "worker/period.h"
#include "worker/status_poll.h"

std::atomic<std::uint8_t> StopRequested{0};
std::atomic<std::uint8_t> WorkerFinished{0};

namespace {

void Poll() {
    if (ManualHomingRuns()) {
        MyManualHomingStep();
    }
    if (AutoHomingRuns()) {
        MyAutoHomingStep();
    }
    PollPosition();
    MyPollStep();
}

/// Sends what waits, in its order, until nothing is left. After a stop that did not wait for it,
/// and while the line is lost, everything stays where it is; so does a lamp's value that was lost
/// with the line.
void DrainCommands() {
    PostedCommand command;
    const auto pop = [&command] {
        const LockHold hold(CommandQueueLock);
        return ZbComPopUniqueCommandNoLock(command);
    };
    while (!WorkerIsShutOut() && !LineIsLost() && pop()) {
        if (!RunPostedCommand(command.text.c_str()) && LineIsLost() && !IsHoming(command.id)) {
            ReturnCommand(std::move(command));
            return;
        }
    }
}

void RunPasses() {
    HANDLE event = OpenCommandEvent();
    const DWORD pollTimeOut = ReadCommandPoll();
    Period reload(2000);
    while (StopRequested.load() == 0) {
        if (reload.HasPassed()) {
            ReloadSettings();
        }
        if (LineIsLost() && !TendLostLine()) {
            continue;
        }
        const DWORD wait = WaitForSingleObject(event, pollTimeOut);
        if (wait == WAIT_TIMEOUT) {
            Poll();
        }
        DrainCommands();
        if (wait == WAIT_FAILED) {
            Sleep(pollTimeOut);  // A wait that fails at once would otherwise spin.
            if (event == nullptr) {
                event = OpenCommandEvent();
            }
        }
    }
    // What was posted just before the stop: a host turns its lamps off and then stops.
    DrainCommands();
}

}  // namespace

WorkerState workerState = WorkerState::NotStarted;

DWORD WINAPI MyWorkerThread(LPVOID) {
    WorkerState end = WorkerState::Stopped;
    try {
        const WorkersThread mark;
        RunPasses();
    } catch (...) {
        // The host goes on with the last good values; the shutdown then has nothing to wait for.
        end = WorkerState::Ended;
    }
    LoseAutoHoming();
    {
        const LockHold hold(HealthLock);
        workerState = end;
        LoseMove();
    }
    WorkerFinished.store(1);
    FreeLibraryAndExitThread(ModuleInstance, 0);
}
