#pragma once

/// What keeps the worker from the line when nothing must move any more. It is asked right before a
/// port is opened and right before a request is written. Other threads always pass.

/// Marks the calling thread, for the life of the object, as the worker's.
class WorkersThread {
  public:
    WorkersThread();
    ~WorkersThread();
    WorkersThread(const WorkersThread&) = delete;
    WorkersThread& operator=(const WorkersThread&) = delete;
};

/// From now on the worker writes nothing and opens nothing, so that no stage moves after its host
/// has stopped the module. An exchange whose request is out ends by itself. For good; any thread.
void ShutWorkerOut();

/// Whether that was asked for. Any thread.
bool WorkerIsShutOut();

/// Calls off the posted command that the worker has taken, or takes that back. What has been
/// written already is not affected. Any thread.
void SetPostedCommandCalledOff(bool isCalledOff);

/// Whether the calling thread may open the port and write.
bool MayUseLine();
