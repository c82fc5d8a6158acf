#include "native/thread.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <mutex>

#include "native/handle.h"

namespace posix {
namespace {

/// What a thread and its handle share.
struct Course {
    LPTHREAD_START_ROUTINE function;
    LPVOID argument;
    TimeKeeper::Place* place = nullptr;
    std::atomic<std::uint32_t> id{0};
    std::atomic<std::uint32_t> ended{0};
};

/// Thrown from within a thread that leaves its library.
struct Leaving {
    HMODULE library;
};

void* Run(void* owned) {
    const std::unique_ptr<std::shared_ptr<Course>> course(
        static_cast<std::shared_ptr<Course>*>(owned));
    Course& own = **course;
    if (timeKeeper != nullptr) {
        timeKeeper->Begin(own.place);
    }
    own.id.store(GetCurrentThreadId(), std::memory_order_release);
    FutexWakeAll(own.id);
    try {
        own.function(own.argument);
    } catch (const Leaving& leaving) {
        FreeLibrary(leaving.library);
    }
    own.ended.store(1, std::memory_order_release);
    FutexWakeAll(own.ended);
    if (timeKeeper != nullptr) {
        timeKeeper->End();
    }
    return nullptr;
}

class Thread : public Object {
  public:
    explicit Thread(std::shared_ptr<Course> course)
        : Object(Kind::Thread), course_(std::move(course)) {}

    ~Thread() override {
        if (started_ && !joined_) {
            pthread_detach(thread_);
        }
    }

    /// Starts it; an errno value.
    int Start(SIZE_T stackSize);

    DWORD Id() {
        while (course_->id.load(std::memory_order_acquire) == 0) {
            FutexWaitUntil(course_->id, 0, Never);
        }
        return course_->id.load(std::memory_order_relaxed);
    }

    DWORD Wait(Deadline deadline) override {
        while (course_->ended.load(std::memory_order_acquire) == 0) {
            if (!FutexWaitUntil(course_->ended, 0, deadline)) {
                return WAIT_TIMEOUT;
            }
        }
        // Only a joined thread has left its library's code for good.
        const std::lock_guard hold(joinLock_);
        if (!joined_) {
            pthread_join(thread_, nullptr);
            joined_ = true;
        }
        return WAIT_OBJECT_0;
    }

  private:
    const std::shared_ptr<Course> course_;
    pthread_t thread_{};
    bool started_ = false;
    std::mutex joinLock_;
    bool joined_ = false;
};

int Thread::Start(SIZE_T stackSize) {
    auto shared = std::make_unique<std::shared_ptr<Course>>(course_);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    std::size_t standard = 0;
    pthread_attr_getstacksize(&attributes, &standard);
    int error = 0;
    if (stackSize > standard) {
        error = pthread_attr_setstacksize(&attributes, stackSize);
    }
    if (timeKeeper != nullptr) {
        course_->place = timeKeeper->Announce();
    }
    if (error == 0) {
        error = pthread_create(&thread_, &attributes, Run, shared.get());
    }
    pthread_attr_destroy(&attributes);
    if (error == 0) {
        started_ = true;
        (void)shared.release();  // The thread's own now.
    } else if (timeKeeper != nullptr) {
        timeKeeper->Withdraw(course_->place);
    }
    return error;
}

}  // namespace

void LeaveThread(HMODULE library) {
    throw Leaving{library};
}

}  // namespace posix

HANDLE CreateThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stackSize,
                    LPTHREAD_START_ROUTINE function, LPVOID argument, DWORD flags, LPDWORD id) {
    if (attributes != nullptr || flags != 0) {
        return posix::Fail(ERROR_NOT_SUPPORTED, HANDLE{nullptr});
    }
    if (function == nullptr) {
        return posix::Fail(ERROR_INVALID_PARAMETER, HANDLE{nullptr});
    }
    return posix::Guarded(HANDLE{nullptr}, [&]() -> HANDLE {
        auto course = std::make_shared<posix::Course>();
        course->function = function;
        course->argument = argument;
        auto thread = std::make_unique<posix::Thread>(course);
        posix::Thread& started = *thread;
        const HANDLE handle = posix::NewHandle(std::move(thread));
        if (handle == nullptr) {
            return nullptr;
        }
        const int error = started.Start(stackSize);
        if (error != 0) {
            CloseHandle(handle);
            return posix::Fail(posix::ErrorOf(error), HANDLE{nullptr});
        }
        if (id != nullptr) {
            *id = started.Id();
        }
        return handle;
    });
}

DWORD GetCurrentThreadId() {
    thread_local const auto id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}
