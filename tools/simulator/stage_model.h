#pragma once

#include <array>
#include <cstdint>

#include "simulator/axis.h"

namespace simulator {

enum class AxisName { X = 0, Y = 1, Z = 2 };

inline constexpr int AxisCount = 3;
inline constexpr int SwitchCount = 16;
inline constexpr int LampCount = 11;
inline constexpr int FullLamp = 10'000;

/// The switches that have a name; the numbers are their places in the switch reply.
enum SwitchNumber {
    EmergencySwitch = 1,
    YSwitch = 3,
    DataSwitch = 5,
    FootSwitch = 12,
    MeasMode = 13
};

/// The stage with its axes, switches and lamps: a state that time and commands advance. It knows
/// no text and no clock, so that real and virtual time can drive it. Not thread-safe.
class StageModel {
  public:
    /// Lets time pass up to `now`; an earlier time changes nothing.
    void AdvanceTo(Time now);

    Axis& At(AxisName axis) { return axes_[static_cast<std::size_t>(axis)]; }
    const Axis& At(AxisName axis) const { return axes_[static_cast<std::size_t>(axis)]; }
    /// Puts all axes there at once.
    void Place(const std::array<double, AxisCount>& counts);

    /// How long a resting axis stands still after a move was accepted; 0 at first.
    void SetMotionDelay(Time delay) { motionDelay_ = delay; }
    /// Starts a move of all axes. False: refused, since an automatic origin return is under way.
    bool MoveTo(const std::array<std::int32_t, AxisCount>& counts);
    /// The operator's cancel: every driven axis comes to a stop. With none it changes nothing.
    void Cancel();
    bool Cancelled() const { return cancelled_; }
    /// True while any axis carries out a move or an automatic origin return.
    bool Commanded() const;
    /// True while any origin return is under way, the operator's included.
    bool Homing() const;

    /// As after switching the controller off and on: all axes, lamps and the remote mode. Switches
    /// and settings stay.
    void Reset();

    /// Starts the automatic origin return. False: refused.
    bool StartAutomaticHome(AxisName axis) { return At(axis).StartAutomaticHome(); }
    /// Starts the origin return by hand. False: refused.
    bool StartManualHome(AxisName axis) { return At(axis).StartManualHome(); }

    /// `number` from 1 to 16, otherwise nothing happens and the result is false.
    bool SetSwitch(int number, std::int32_t value);
    /// 0 for a number out of range.
    std::int32_t Switch(int number) const;
    /// `lamp` from 0 to 10, `value` from 0 to 10000, otherwise false.
    bool SetLamp(int lamp, std::int32_t value);
    /// 0 for a lamp out of range.
    std::int32_t Lamp(int lamp) const;

    /// Remote mode is kept and reported; nothing depends on it.
    void SetRemote(bool on) { remote_ = on; }
    bool Remote() const { return remote_; }

  private:
    std::array<Axis, AxisCount> axes_;
    std::array<std::int32_t, SwitchCount> switches_{};
    std::array<std::int32_t, LampCount> lamps_{};
    Time now_{0};
    Time motionDelay_{0};
    bool cancelled_ = false;
    bool remote_ = false;
};

}  // namespace simulator
