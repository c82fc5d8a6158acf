#include "link/line_gate.h"

#include <atomic>

#include "platform/win32.h"

namespace {

/// Written by the worker alone; 0 while there is none.
std::atomic<DWORD> workersThread{0};
std::atomic<bool> workerIsShutOut{false};
std::atomic<bool> postedCommandIsCalledOff{false};
std::atomic<bool> lineIsLost{false};
std::atomic<bool> workerMends{false};

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

bool LineIsLost() {
    return lineIsLost.load();
}

void SetLineLost(bool isLost) {
    lineIsLost.store(isLost);
}

LineMending::LineMending() {
    workerMends.store(true);
}

LineMending::~LineMending() {
    workerMends.store(false);
}

bool MayUseLine() {
    const bool isWorker = workersThread.load() == GetCurrentThreadId();
    if (isWorker && (workerIsShutOut.load() || postedCommandIsCalledOff.load())) {
        return false;
    }
    return !lineIsLost.load() || (isWorker && workerMends.load());
}
