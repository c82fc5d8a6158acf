#pragma once

#include "host/start_stop.h"
#include "link/command_queue.h"
#include "support/machine.h"
#include "worker/worker_thread.h"

/// The module's worker with settings of its own. One in a process.
class RunningWorker {
  public:
    explicit RunningWorker(const char* settings) {
        test_support::WriteSettings(settings);
        StartModule(0);
    }
    ~RunningWorker() {
        // The worker waits for a command, maybe for minutes.
        StopRequested.store(1);
        SetEvent(CommandEvent.load());
        StopModule(0);
    }
    RunningWorker(const RunningWorker&) = delete;
    RunningWorker& operator=(const RunningWorker&) = delete;
};
