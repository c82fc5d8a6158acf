#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "native/clock.h"
#include "native/window.h"

namespace posix {

struct Message {
    HWND window;
    UINT number;
    WPARAM wParam;
    LPARAM lParam;
};

struct Timer {
    HWND window;
    UINT_PTR id;
    Deadline period;
    Deadline due;
};

/// Work for another thread's window. It stands on the stack of its caller, who waits.
struct Call {
    HWND window;
    const std::function<LRESULT(const Window&)>& work;
    MessageQueue& caller;
    bool done = false;
    LRESULT answer = 0;
    DWORD error = ERROR_INVALID_WINDOW_HANDLE;
};

/// What a thread has to do for its windows. Everything under the lock.
class MessageQueue {
  public:
    /// A thread that ends takes its dialogs along.
    ~MessageQueue();

    void Add(const Message& message) {
        posted_.push_back(message);
        Wake();
    }
    bool IsFull() const {
        constexpr std::size_t MostPosted = 10'000;
        return posted_.size() >= MostPosted;
    }
    void Start(const Timer& timer);
    /// Waits until the call is done, and serves those of others meanwhile.
    void Await(std::unique_lock<std::mutex>& hold, MessageQueue& owner, Call& call);
    bool ServeOne(Deadline deadline);
    void Forget(const Dialog& dialog);

  private:
    void Wake() {
        changes_.fetch_add(1);
        FutexWakeAll(changes_);
    }
    void WaitForChange(std::unique_lock<std::mutex>& hold, Deadline deadline);
    void ServeCall(std::unique_lock<std::mutex>& hold);
    static void Finish(Call& call) {
        call.done = true;
        call.caller.Wake();
    }
    bool TakeDueTimer(Message& message);
    Deadline NextTimer() const;

    std::atomic<std::uint32_t> changes_{0};
    std::deque<Message> posted_;
    std::deque<Call*> calls_;
    std::vector<Timer> timers_;
};

/// The calling thread's.
MessageQueue& OwnQueue();

}  // namespace posix
