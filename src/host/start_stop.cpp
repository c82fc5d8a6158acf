#include "host/start_stop.h"

#include "homing/automatic_homing.h"
#include "homing/manual_homing.h"
#include "link/command_queue.h"
#include "link/exchange.h"
#include "link/line_gate.h"
#include "log/zbr_log.h"
#include "panel/panel.h"
#include "platform/guard.h"
#include "worker/worker_thread.h"

std::atomic<std::uint8_t> AutoHomingMode{0};

namespace {

constexpr int WorkerWaitSleeps = 200;
constexpr DWORD WorkerWaitMilliseconds = 10;

Decimal Low32(std::uintptr_t data) {
    return {static_cast<std::int32_t>(data)};
}

std::atomic<bool> workerStarted{false};

void SetWorkerState(WorkerState state) {
    const LockHold hold(HealthLock);
    workerState = state;
}

/// Starts the worker with a hold on the library, which it gives back as it ends: a host may unload
/// the library at any time. False when the system refuses.
bool StartWorker() {
    HMODULE library = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&MyWorkerThread), &library)) {
        return false;
    }
    SetWorkerState(WorkerState::Runs);
    const HANDLE worker = CreateThread(nullptr, 0, MyWorkerThread, nullptr, 0, nullptr);
    if (worker == nullptr) {
        SetWorkerState(WorkerState::NotStarted);
        FreeLibrary(library);
        return false;
    }
    CloseHandle(worker);
    return true;
}

/// Of two threads that start the module at once, one starts the worker. An event or a worker that
/// the system refuses is left to the next start.
void StartWorkerOnce() {
    EnsureCommandEvent();
    if (!workerStarted.exchange(true) && !StartWorker()) {
        workerStarted.store(false);
    }
}

/// A controller that can't be asked, for whatever reason, does not keep the worker from starting.
void EnableRemoteMode() {
    if (Guarded(0, MyRemoteEnable) == 0) {
        WriteLine("OviskCmd_Startup remote mode not enabled\n");
    }
}

void WaitForWorker() {
    for (int sleeps = 0; sleeps < WorkerWaitSleeps && WorkerFinished.load() == 0; ++sleeps) {
        Sleep(WorkerWaitMilliseconds);
    }
}

}  // namespace

void StartModule(std::uintptr_t data) {
    WriteLine("OviskCmd_Startup data=", Low32(data), "\n");
    AutoHomingMode.store(data == 1 ? 1 : 0);
    EnableRemoteMode();
    StartWorkerOnce();
    ShowPanelIfWanted();
}

void StopModule(std::uintptr_t data) {
    WriteLine("OviskCmd_Shutdown data=", Low32(data), "\n");
    StopRequested.store(1);
    WaitForWorker();
    WriteLine("OviskCmd_Shutdown closing comms\n");
    ShutWorkerOut();
    ClosePortWhenFree();
    WriteLine("OviskCmd_Shutdown finished\n");
}

void HomeStage(std::uintptr_t data) {
    const auto parent = reinterpret_cast<HWND>(data);
    if (AutoHomingMode.load() != 0) {
        RunAutoHoming(parent);
    } else {
        RunManualHoming(parent);
    }
}
