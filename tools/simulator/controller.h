#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "simulator/device.h"
#include "simulator/transport.h"

namespace simulator {

/// A device that runs in a thread of its own, in real time, on a transport. All functions may be
/// called from any thread, but none of them from a script.
class Controller {
  public:
    /// `transport` must outlive the controller.
    explicit Controller(Transport& transport, const DeviceSettings& settings = {});
    /// Stops.
    ~Controller();
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    /// Starts answering. Not while it runs.
    void Start();
    /// Ends the thread and waits for it; replies that are not due yet are lost. May be repeated.
    void Stop();

    /// Runs `work` with the StageModel, or with the whole Device if it takes that, as they are
    /// now, under the lock, and returns what `work` returns. Keep no reference.
    template <class Work>
    auto With(Work&& work) {
        const std::lock_guard hold(mutex_);
        device_.AdvanceTo(Now());
        if constexpr (std::is_invocable_v<Work, StageModel&>) {
            return std::forward<Work>(work)(device_.Model());
        } else {
            return std::forward<Work>(work)(device_);
        }
    }

    /// The script runs on the controller's thread, under the lock. An empty one ends scripting.
    void SetScript(Script script);

    /// All requests so far, oldest first, as they stood on the wire with their line ends.
    std::vector<std::string> RequestLog() const;
    /// The same, and forgets them.
    std::vector<std::string> TakeRequestLog();
    /// Waits until the log holds `count` requests that equal `text`, line end included. False if
    /// that has not happened within `limit`.
    bool WaitForRequest(const std::string& text, std::size_t count,
                        std::chrono::milliseconds limit) const;

  private:
    Time Now() const;
    void Run();
    void FollowCable(bool in);

    Transport& transport_;
    std::chrono::steady_clock::time_point switchedOn_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    mutable std::condition_variable received_;
    Device device_;
    /// Whether the transport's cable is in; the controller's thread alone uses it.
    bool cableIn_ = true;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace simulator
