#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "controller/controller_line.h"
#include "controller/log_tap.h"
#include "host/module_library.h"

namespace test_support {

/// A freshly loaded module: every test sees it as after the start of a process.
class ModuleTest : public testing::Test {
  protected:
    ModuleTest();
    /// Stops the module if it was started, and waits for its worker, so that it can be unloaded.
    ~ModuleTest() override;

    /// Writes the settings file, then loads the module.
    void Load(const std::string& settingsLines = "");
    void Start(std::uintptr_t data = 0);
    void Stop();
    /// Stops the module and takes it out of the process as far as its host can.
    void Unload();
    /// Takes it out as it is, and its library too once the worker is over.
    void UnloadAtOnce();
    static bool IsLoaded();

    /// Puts a controller on the line. It stays until the module has stopped.
    SimulatedController& PlugIn() {
        return *(controller_ = std::make_unique<SimulatedController>());
    }

    OviskData Snapshot();
    bool SeesPosition(int x, int y, int z);
    ZbOviskStage Stage();
    ZbOviskHealth Health();

    host_tool::ModuleLibrary& Module() { return *module_; }

    LogTap log;

  private:
    void StopWhole();

    std::unique_ptr<SimulatedController> controller_;
    std::unique_ptr<host_tool::ModuleLibrary> module_;
    bool started_ = false;
};

}  // namespace test_support
