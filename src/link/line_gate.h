#pragma once

/// What keeps threads from the line: the worker when nothing must move any more, and everybody but
/// the worker as it mends while the line is lost. It is asked right before a port is opened and
/// right before a request is written.

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

/// Whether the line is lost: nothing goes out until the worker has mended it. Set by whoever notes
/// the failure that counts, cleared by the worker. Any thread.
bool LineIsLost();
void SetLineLost(bool isLost);

/// Lets the worker's thread through to a lost line, for the life of the object.
class LineMending {
  public:
    LineMending();
    ~LineMending();
    LineMending(const LineMending&) = delete;
    LineMending& operator=(const LineMending&) = delete;
};

/// Whether the calling thread may open the port and write.
bool MayUseLine();
