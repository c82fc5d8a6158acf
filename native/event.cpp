#include <new>

#include "native/shared_object.h"

namespace posix {
namespace {

/// In shared memory, so nothing here may depend on its users' lives: a killed waiter leaves the
/// count too high, which costs a needless wake, and takes no set with it, as each set wakes all.
struct EventWords {
    std::atomic<std::uint32_t> set;
    std::atomic<std::uint32_t> waiters;
};

class Event : public Object {
  public:
    static constexpr Kind OwnKind = Kind::Event;

    explicit Event(std::unique_ptr<SharedMemory> memory)
        : Object(OwnKind),
          memory_(std::move(memory)),
          words_(*static_cast<EventWords*>(memory_->Body())) {}

    void Set() {
        words_.set.store(1);
        if (words_.waiters.load() != 0) {
            FutexWakeAll(words_.set);
        }
    }

    DWORD Wait(Deadline deadline) override {
        if (Consume()) {
            return WAIT_OBJECT_0;
        }
        if (deadline == 0) {
            return WAIT_TIMEOUT;
        }
        words_.waiters.fetch_add(1);
        bool inTime = true;
        bool consumed = Consume();
        while (!consumed && inTime) {
            inTime = FutexWaitUntil(words_.set, 0, deadline);
            consumed = Consume();
        }
        words_.waiters.fetch_sub(1);
        return consumed ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    }

  private:
    bool Consume() {
        std::uint32_t set = 1;
        return words_.set.compare_exchange_strong(set, 0);
    }

    const std::unique_ptr<SharedMemory> memory_;
    EventWords& words_;
};

}  // namespace
}  // namespace posix

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES attributes, BOOL manualReset, BOOL initialState,
                    LPCWSTR name) {
    if (attributes != nullptr || manualReset != FALSE) {
        return posix::Fail(ERROR_NOT_SUPPORTED, HANDLE{nullptr});
    }
    return posix::Guarded(HANDLE{nullptr}, [&]() -> HANDLE {
        auto memory =
            posix::OpenShared(name, posix::Kind::Event, sizeof(posix::EventWords), [&](void* body) {
                (new (body) posix::EventWords{})->set = initialState != FALSE ? 1 : 0;
            });
        return memory == nullptr
                   ? nullptr
                   : posix::NewHandle(std::make_unique<posix::Event>(std::move(memory)));
    });
}

BOOL SetEvent(HANDLE event) {
    const posix::UseOf<posix::Event> use(event);
    if (!use) {
        return FALSE;
    }
    use->Set();
    posix::Breathe();
    return TRUE;
}
