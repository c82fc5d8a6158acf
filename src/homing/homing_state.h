#pragma once

#include <atomic>
#include <cstdint>

/// A homing procedure's state, shared by the dialog's thread and the worker without a lock. Each
/// opening of the dialog begins a new run: what the worker has found out about one run can't move
/// another one on, even if both are in the same state.
class HomingState {
  public:
    /// The state of one run.
    struct Moment {
        std::uint32_t state;
        std::uint32_t run;
    };

    Moment Now() const { return Unpack(word_.load()); }
    std::uint32_t Value() const { return Now().state; }

    /// Begins a new run. The dialog's thread.
    void Begin(std::uint32_t state) { word_.store(Pack({state, Now().run + 1})); }
    /// Goes on within the run. The dialog's thread.
    void Set(std::uint32_t state) { word_.store(Pack({state, Now().run})); }
    /// Goes on if nothing has changed since `then`. Any thread.
    bool MoveOn(Moment then, std::uint32_t state) {
        std::uint64_t expected = Pack(then);
        return word_.compare_exchange_strong(expected, Pack({state, then.run}));
    }

  private:
    static std::uint64_t Pack(Moment moment) {
        return std::uint64_t{moment.run} << 32 | moment.state;
    }
    static Moment Unpack(std::uint64_t word) {
        return {static_cast<std::uint32_t>(word), static_cast<std::uint32_t>(word >> 32)};
    }

    std::atomic<std::uint64_t> word_{0};
};

/// No homing under way, in both procedures.
inline constexpr std::uint32_t HomingIdle = 0;
