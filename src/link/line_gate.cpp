#include "link/line_gate.h"

#include <atomic>

#include "platform/win32.h"

namespace {

/// Written by the worker alone; 0 while there is none.
std::atomic<DWORD> workersThread{0};
std::atomic<bool> workerIsShutOut{false};
std::atomic<bool> postedCommandIsCalledOff{false};

}  // namespace

WorkersThread::WorkersThread() {
    workersThread.store(GetCurrentThreadId());
}

WorkersThread::~WorkersThread() {
    workersThread.store(0);
}

void ShutWorkerOut() {
    workerIsShutOut.store(true);
}

bool WorkerIsShutOut() {
    return workerIsShutOut.load();
}

void SetPostedCommandCalledOff(bool isCalledOff) {
    postedCommandIsCalledOff.store(isCalledOff);
}

bool MayUseLine() {
    return workersThread.load() != GetCurrentThreadId() ||
           (!workerIsShutOut.load() && !postedCommandIsCalledOff.load());
}
