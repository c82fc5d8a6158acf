#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "module/module_test.h"
#include "support/dialog_driver.h"

namespace test_support {

/// A started module, a controller whose homing condition the test says, and a host that homes.
class HomingTest : public ModuleTest {
  protected:
    /// `startData` 1: automatic homing.
    void StartModule(std::uintptr_t startData, const std::string& settings = "CmdPoll=10\n");
    ~HomingTest() override;

    /// From now on the reply to a homing query holds these fields; empty: no reply at all.
    void SetCondition(const std::string& fields);
    /// Holds each homing reply back for so long.
    void SetConditionDelay(std::chrono::milliseconds delay);

    /// The host's thread calls the Home command; Home() waits for its return.
    void OpenHome();
    void FinishHome();

    /// The homing commands that have come since the last call.
    std::vector<std::string> TakeCommands();
    /// Waits for a homing command.
    bool Comes(const std::string& command);
    /// Waits until the health tells this: what is under way, at which axis, how the last one ended.
    bool IsTold(ZbOviskHoming homing, int axis, ZbOviskHomingEnd last);
    /// Waits for so many further polls, then tells whether a homing query was among them.
    bool StillAsks();

    SimulatedController* controller = nullptr;

  private:
    std::mutex mutex_;
    std::string fields_ = "0,0,0,0,0";
    std::chrono::milliseconds delay_{0};
    Thread host_;
};

inline const std::string ManualCaption = "Axis Homing In Progress";
inline const std::string AutoCaption = "Warning";

}  // namespace test_support
