#include <unistd.h>

#include <cerrno>
#include <new>
#include <string>

#include "native/shared_object.h"

namespace posix {
namespace {

/// In shared memory. The robust mutex is the truth; owner and depth follow it.
struct MutexBody {
    pthread_mutex_t mutex;
    std::atomic<std::uint32_t> owner;
    std::uint32_t depth;  // The owner's only.
};

void SetUp(void* memory, bool owned) {
    auto* body = new (memory) MutexBody{};
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&body->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (owned) {
        pthread_mutex_lock(&body->mutex);
        body->owner = GetCurrentThreadId();
        body->depth = 1;
    }
}

class Mutex : public Object {
  public:
    static constexpr Kind OwnKind = Kind::Mutex;

    explicit Mutex(std::unique_ptr<SharedMemory> memory)
        : Object(OwnKind),
          memory_(std::move(memory)),
          body_(*static_cast<MutexBody*>(memory_->Body())) {}

    ~Mutex() override {
        // The kernel's list of the owner's robust mutexes leads through this memory.
        if (OwnedInThisProcess()) {
            memory_->Abandon();
        }
    }

    BOOL Release() {
        if (body_.owner.load(std::memory_order_relaxed) != GetCurrentThreadId()) {
            return Fail(ERROR_NOT_OWNER);
        }
        if (--body_.depth == 0) {
            body_.owner.store(0, std::memory_order_relaxed);
        }
        return Unlock(body_.mutex) == 0 ? TRUE : Fail(ERROR_NOT_OWNER);
    }

    DWORD Wait(Deadline deadline) override {
        int result = pthread_mutex_trylock(&body_.mutex);
        if (result == EBUSY && deadline != 0) {
            result = LockUntil(body_.mutex, deadline);
        }
        switch (result) {
            case 0:
                body_.owner.store(GetCurrentThreadId(), std::memory_order_relaxed);
                ++body_.depth;
                return WAIT_OBJECT_0;
            case EOWNERDEAD:
                pthread_mutex_consistent(&body_.mutex);
                body_.owner.store(GetCurrentThreadId(), std::memory_order_relaxed);
                body_.depth = 1;
                return WAIT_ABANDONED;
            case EBUSY:
            case ETIMEDOUT:
                return WAIT_TIMEOUT;
            default:
                return Fail(ErrorOf(result), WAIT_FAILED);
        }
    }

  private:
    bool OwnedInThisProcess() const {
        const std::uint32_t owner = body_.owner.load(std::memory_order_relaxed);
        return owner != 0 &&
               access(("/proc/self/task/" + std::to_string(owner)).c_str(), F_OK) == 0;
    }

    const std::unique_ptr<SharedMemory> memory_;
    MutexBody& body_;
};

}  // namespace
}  // namespace posix

HANDLE CreateMutexW(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCWSTR name) {
    if (attributes != nullptr) {
        return posix::Fail(ERROR_NOT_SUPPORTED, HANDLE{nullptr});
    }
    return posix::Guarded(HANDLE{nullptr}, [&]() -> HANDLE {
        auto memory =
            posix::OpenShared(name, posix::Kind::Mutex, sizeof(posix::MutexBody),
                              [&](void* body) { posix::SetUp(body, initialOwner != FALSE); });
        return memory == nullptr
                   ? nullptr
                   : posix::NewHandle(std::make_unique<posix::Mutex>(std::move(memory)));
    });
}

BOOL ReleaseMutex(HANDLE mutex) {
    const posix::UseOf<posix::Mutex> use(mutex);
    return use ? use->Release() : FALSE;
}
