#include "native/handle.h"

#include <array>
#include <cerrno>
#include <mutex>

namespace posix {
namespace {

/// One place of the handle table. The state packs the place's generation (upper half), whether its
/// handle is open, and the count of users, the open handle being one; so that one atomic step tells
/// a stale handle and takes a use.
struct Slot {
    std::atomic<std::uint64_t> state{0};
    Object* object = nullptr;
    std::size_t nextFree = 0;
};

constexpr std::uint64_t OpenBit = std::uint64_t{1} << 31;
constexpr std::uint64_t UsersMask = OpenBit - 1;
constexpr unsigned GenerationShift = 32;
constexpr std::uint64_t GenerationMask = 0x3FFFFFFF;

// A handle is the generation, the slot's index and two zero bits, as Windows has them.
constexpr unsigned IndexShift = 2;
constexpr unsigned IndexBits = 14;
constexpr std::size_t SlotCount = std::size_t{1} << IndexBits;

// Constant-initialised and never ended: handles may be used by threads that outlive static objects.
constinit std::array<Slot, SlotCount> slots{};
constinit std::mutex freeLock;
constinit std::size_t firstFree = 0;
constinit std::size_t firstUnused = 1;  // Slot 0 stays empty: no handle is null.

constinit thread_local DWORD lastError = 0;

std::uint64_t GenerationOf(std::uint64_t state) {
    return state >> GenerationShift;
}

std::size_t TakeSlot() {
    const std::lock_guard hold(freeLock);
    std::size_t index = firstFree;
    if (index != 0) {
        firstFree = slots[index].nextFree;
    } else if (firstUnused < SlotCount) {
        index = firstUnused++;
    }
    return index;
}

/// Ends the object of a slot that has neither handle nor users, and makes the slot free again.
void Retire(std::size_t index, std::uint64_t state) {
    Slot& slot = slots[index];
    delete slot.object;
    slot.object = nullptr;
    const std::uint64_t generation = (GenerationOf(state) + 1) & GenerationMask;
    slot.state.store(generation << GenerationShift, std::memory_order_release);
    const std::lock_guard hold(freeLock);
    slot.nextFree = firstFree;
    firstFree = index;
}

void DropUser(std::size_t index) {
    const std::uint64_t before = slots[index].state.fetch_sub(1, std::memory_order_acq_rel);
    if ((before & UsersMask) == 1) {
        Retire(index, before);
    }
}

/// The slot of a handle value and the generation that it names; index 0 if it can be no handle.
struct Place {
    std::size_t index;
    std::uint64_t generation;
};

Place PlaceOf(HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const bool aligned = (value & ((1U << IndexShift) - 1)) == 0;
    return {.index = aligned ? (value >> IndexShift) & (SlotCount - 1) : 0,
            .generation = value >> (IndexShift + IndexBits)};
}

/// Changes the state of the handle's slot by `step`, if the handle is open.
bool Step(const Place& place, std::uint64_t step) {
    std::atomic<std::uint64_t>& word = slots[place.index].state;
    std::uint64_t state = word.load(std::memory_order_relaxed);
    do {
        if ((state & OpenBit) == 0 || GenerationOf(state) != place.generation) {
            return false;
        }
    } while (!word.compare_exchange_weak(state, state + step, std::memory_order_acq_rel,
                                         std::memory_order_relaxed));
    return true;
}

}  // namespace

void SetError(DWORD code) {
    lastError = code;
}

DWORD ErrorOf(int number) {
    switch (number) {
        case ENOENT:
        case ENXIO:
        case ENODEV:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EBUSY:
        case EROFS:
            return ERROR_ACCESS_DENIED;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EMFILE:
        case ENFILE:
        case ENOSPC:
        case EAGAIN:
            return ERROR_NO_SYSTEM_RESOURCES;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case EIO:
            return ERROR_IO_DEVICE;
        default:
            return ERROR_GEN_FAILURE;
    }
}

DWORD Object::Wait(Deadline /*deadline*/) {
    return Fail(ERROR_INVALID_HANDLE, WAIT_FAILED);
}

HANDLE NewHandle(std::unique_ptr<Object> object) {
    const std::size_t index = TakeSlot();
    if (index == 0) {
        return Fail(ERROR_NO_SYSTEM_RESOURCES, HANDLE{nullptr});
    }
    Slot& slot = slots[index];
    slot.object = object.release();
    const std::uint64_t state = slot.state.load(std::memory_order_relaxed);
    slot.state.store(state | OpenBit | 1, std::memory_order_release);
    return reinterpret_cast<HANDLE>((GenerationOf(state) << (IndexShift + IndexBits)) |
                                    (index << IndexShift));
}

Use::Use(HANDLE handle) {
    const Place place = PlaceOf(handle);
    if (Step(place, 1)) {
        slot_ = place.index;
        object_ = slots[place.index].object;
    } else {
        SetError(ERROR_INVALID_HANDLE);
    }
}

Use::~Use() {
    if (object_ != nullptr) {
        DropUser(slot_);
    }
}

}  // namespace posix

BOOL CloseHandle(HANDLE handle) {
    const posix::Place place = posix::PlaceOf(handle);
    // Taking the open bit away and keeping the handle's own use, so that the slot cannot go yet.
    if (!posix::Step(place, std::uint64_t{0} - posix::OpenBit)) {
        return posix::Fail(ERROR_INVALID_HANDLE);
    }
    posix::DropUser(place.index);
    return TRUE;
}

DWORD GetLastError() {
    return posix::lastError;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    const posix::Use use(handle);
    if (use.Get() == nullptr) {
        return WAIT_FAILED;
    }
    // Mostly there is nothing to wait for, and then nobody needs to know the time.
    DWORD result = use.Get()->Wait(0);
    if (result == WAIT_TIMEOUT && milliseconds != 0) {
        result = use.Get()->Wait(posix::After(milliseconds));
    }
    posix::Breathe();
    return result;
}
