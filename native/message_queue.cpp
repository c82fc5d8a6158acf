#include "native/message_queue.h"

#include <algorithm>

#include "native/handle.h"

namespace posix {
namespace {

constexpr Deadline PerMillisecond = 1'000'000;
constexpr UINT LeastPeriod = 10;

void Dispatch(const Message& message) {
    Window window{};
    {
        const std::lock_guard hold(desktop);
        window = Find(message.window);
    }
    if (window.control != nullptr) {
        SendToControl(*window.control, message.number, message.wParam, message.lParam);
    } else if (window) {
        SendToDialog(*window.dialog, message.number, message.wParam, message.lParam);
    }
}

}  // namespace

MessageQueue& OwnQueue() {
    thread_local MessageQueue queue;
    return queue;
}

MessageQueue::~MessageQueue() {
    for (;;) {
        Dialog* own = nullptr;
        {
            const std::lock_guard hold(desktop);
            own = dialogs;
            while (own != nullptr && own->queue != this) {
                own = own->next;
            }
        }
        if (own == nullptr) {
            return;
        }
        Remove(*own);
        delete own;
    }
}

void MessageQueue::Start(const Timer& timer) {
    std::erase_if(timers_, [&](const Timer& other) {
        return other.window == timer.window && other.id == timer.id;
    });
    timers_.push_back(timer);
}

void MessageQueue::Forget(const Dialog& dialog) {
    std::erase_if(posted_, [&](const Message& one) { return BelongsTo(one.window, dialog); });
    std::erase_if(timers_, [&](const Timer& one) { return BelongsTo(one.window, dialog); });
    std::erase_if(calls_, [&](Call* call) {
        const bool gone = BelongsTo(call->window, dialog);
        if (gone) {
            Finish(*call);
        }
        return gone;
    });
}

void MessageQueue::WaitForChange(std::unique_lock<std::mutex>& hold, Deadline deadline) {
    const std::uint32_t seen = changes_.load();
    hold.unlock();
    FutexWaitUntil(changes_, seen, deadline);
    hold.lock();
}

void MessageQueue::ServeCall(std::unique_lock<std::mutex>& hold) {
    Call& call = *calls_.front();
    calls_.pop_front();
    const Window window = Find(call.window);
    hold.unlock();
    const DWORD before = GetLastError();
    SetError(ERROR_SUCCESS);
    const LRESULT answer = call.work(window);
    const DWORD error = GetLastError();
    SetError(before);
    hold.lock();
    call.answer = answer;
    call.error = error;
    Finish(call);
}

void MessageQueue::Await(std::unique_lock<std::mutex>& hold, MessageQueue& owner, Call& call) {
    owner.calls_.push_back(&call);
    owner.Wake();
    while (!call.done) {
        if (calls_.empty()) {
            WaitForChange(hold, Never);
        } else {
            ServeCall(hold);
        }
    }
}

bool MessageQueue::TakeDueTimer(Message& message) {
    const Deadline now = timers_.empty() ? 0 : Now();
    const auto due =
        std::ranges::find_if(timers_, [&](const Timer& one) { return one.due <= now; });
    if (due == timers_.end()) {
        return false;
    }
    due->due = std::max(due->due, now - due->period) + due->period;
    message = {.window = due->window, .number = WM_TIMER, .wParam = due->id, .lParam = 0};
    return true;
}

Deadline MessageQueue::NextTimer() const {
    Deadline next = Never;
    for (const Timer& timer : timers_) {
        next = std::min(next, timer.due);
    }
    return next;
}

bool MessageQueue::ServeOne(Deadline deadline) {
    std::unique_lock hold(desktop);
    for (;;) {
        Message message{};
        if (!calls_.empty()) {
            ServeCall(hold);
            return true;
        }
        const bool isPosted = !posted_.empty();
        if (isPosted) {
            message = posted_.front();
            posted_.pop_front();
        }
        if (isPosted || TakeDueTimer(message)) {
            hold.unlock();
            Dispatch(message);
            return true;
        }
        if (deadline != Never && Now() >= deadline) {
            return false;
        }
        WaitForChange(hold, std::min(deadline, NextTimer()));
    }
}

LRESULT OnOwner(HWND handle, const std::function<LRESULT(const Window&)>& work) {
    MessageQueue& own = OwnQueue();
    std::unique_lock hold(desktop);
    const Window window = Find(handle);
    if (!window) {
        return 0;
    }
    if (window.dialog->queue == &own) {
        hold.unlock();
        return work(window);
    }
    Call call{.window = handle, .work = work, .caller = own};
    own.Await(hold, *window.dialog->queue, call);
    if (call.error != ERROR_SUCCESS) {
        SetError(call.error);
    }
    return call.answer;
}

bool ServeOne(Deadline deadline) {
    return OwnQueue().ServeOne(deadline);
}

}  // namespace posix

BOOL PostMessageW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    return posix::Guarded(FALSE, [&] {
        const std::lock_guard hold(posix::desktop);
        const posix::Window window = posix::Find(handle);
        if (!window) {
            return FALSE;
        }
        if (window.dialog->queue->IsFull()) {
            return posix::Fail(ERROR_NOT_ENOUGH_QUOTA);
        }
        window.dialog->queue->Add(
            {.window = handle, .number = message, .wParam = wParam, .lParam = lParam});
        return TRUE;
    });
}

LRESULT SendMessageW(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    return posix::Guarded(LRESULT{0}, [&] {
        return posix::OnOwner(handle, [&](const posix::Window& window) {
            return window.control != nullptr
                       ? posix::SendToControl(*window.control, message, wParam, lParam)
                       : posix::SendToDialog(*window.dialog, message, wParam, lParam);
        });
    });
}

UINT_PTR SetTimer(HWND handle, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    if (procedure != nullptr) {
        return posix::Fail(ERROR_NOT_SUPPORTED, UINT_PTR{0});
    }
    return posix::Guarded(UINT_PTR{0}, [&]() -> UINT_PTR {
        const std::lock_guard hold(posix::desktop);
        const posix::Window window = posix::Find(handle);
        if (!window) {
            return 0;
        }
        if (window.control != nullptr) {
            return posix::Fail(ERROR_NOT_SUPPORTED, UINT_PTR{0});
        }
        if (window.dialog->queue != &posix::OwnQueue()) {
            return posix::Fail(ERROR_ACCESS_DENIED, UINT_PTR{0});
        }
        const posix::Deadline period =
            std::max(milliseconds, posix::LeastPeriod) * posix::PerMillisecond;
        window.dialog->queue->Start(
            {.window = handle, .id = id, .period = period, .due = posix::Now() + period});
        return id == 0 ? 1 : id;
    });
}
