#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "link/link_health.h"
#include "replies/query.h"

// What both homing procedures have in common.

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

/// No homing under way.
inline constexpr std::uint32_t HomingIdle = 0;

/// How a run ended. The numbers are those of the plain interface.
enum class HomingEnd { None = 0, Finished = 1, Cancelled = 2, Failed = 3 };

/// How the newest run of either procedure that is over has ended.
extern HomingEnd lastHomingEnd ZB_GUARDED_BY(HealthLock);

/// Ends the run if nothing has changed since `then`, for whoever reads the health at one moment
/// with how it ended; false when something has changed. Any thread.
bool EndHoming(HomingState& state, HomingState::Moment then, HomingEnd end) ZB_EXCLUDES(HealthLock);

/// Ends the run that is under way, in whatever state it is; one that is over has ended as it did.
/// Gives its last state, idle if there was none. Any thread.
HomingState::Moment EndHoming(HomingState& state, HomingEnd end) ZB_EXCLUDES(HealthLock);

/// Ends the run that is under way as failed, whatever its dialog does meanwhile, and asks the
/// dialog to close, if it is there. The worker.
void BreakOffHoming(HomingState& state, HWND dialog) ZB_EXCLUDES(HealthLock);

/// The worker asks a dialog to close whose run, in wParam, it has broken off.
inline constexpr UINT BreakOffMessage = WM_APP + 2;

/// The controller's homing condition: of its fields up to five are read, and the fourth and the
/// fifth tell how the origin returns of X and Y stand. Only a field's first character counts.
class HomingCondition {
  public:
    /// Asks for it. False, with the exchange's log line, when no good reply came.
    bool Query();

    /// Field 1 to 5; null when the reply has fewer.
    const char* Field(std::size_t number) const { return fields_[number - 1]; }

  private:
    ExchangeReplyBuffer buffer_{};
    std::array<const char*, 5> fields_{};
};

inline constexpr std::size_t XStatusField = 4;
inline constexpr std::size_t YStatusField = 5;

/// What a status field begins with when its axis has finished.
inline constexpr char HomingFinished = '2';

// The dialogs, all of it on their own thread.

/// Places the dialog at half its parent's size less half its own, in screen coordinates: centred on
/// a parent at the screen's origin. Without a parent it is centred on the screen.
void PlaceHomingDialog(HWND dialog);

/// The picture of this resource number, the caller's to delete.
HBITMAP LoadPicture(int resource);
/// Shows it in the dialog's picture control.
void ShowPicture(HWND dialog, HBITMAP picture);

/// Runs the modal dialog of this resource number and returns when it has ended. `open` says whether
/// that dialog is open already: there is only one at a time, and a second call then does nothing.
void RunHomingDialog(int resource, HWND parent, DLGPROC procedure, std::atomic<bool>& open);
