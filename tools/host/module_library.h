#pragma once

#include <filesystem>

#include "host/zb_ovisk.h"

namespace host_tool {

/// The module's file name on this platform. By this name the platform's loader finds the module
/// that was built or installed with the program.
extern const char* const ModuleFileName;

/// The module, loaded from a file and used through its exports alone.
class ModuleLibrary {
  public:
    /// Loads the library and looks its exports up. Throws std::runtime_error when one is missing.
    explicit ModuleLibrary(const std::filesystem::path& path);
    ~ModuleLibrary();
    ModuleLibrary(const ModuleLibrary&) = delete;
    ModuleLibrary& operator=(const ModuleLibrary&) = delete;

    decltype(&::OVISK_ZbrCmd) OVISK_ZbrCmd;
    decltype(&::ZbOvisk_GetOviskData) ZbOvisk_GetOviskData;
    decltype(&::ZbOvisk_GetAndClearLatches) ZbOvisk_GetAndClearLatches;
    decltype(&::ZbOvisk_CncGotoAbsoluteNotifyWorld) ZbOvisk_CncGotoAbsoluteNotifyWorld;
    decltype(&::ZbOvisk_SetLight) ZbOvisk_SetLight;
    decltype(&::ZbOvisk_ReadStage) ZbOvisk_ReadStage;
    decltype(&::ZbOvisk_ReadHealth) ZbOvisk_ReadHealth;

    /// The stage, and how module and line are, as the module has them now.
    ZbOviskStage Stage() const;
    ZbOviskHealth Health() const;

  private:
    template <typename Function>
    void Find(Function& function, const char* name);

    void* library_;
};

/// Starts the module, and stops it on every way out.
class RunningModule {
  public:
    RunningModule(ModuleLibrary& module, std::uintptr_t startData) : module_(module) {
        module_.OVISK_ZbrCmd(OviskCmd_Startup, startData);
    }
    ~RunningModule() { module_.OVISK_ZbrCmd(OviskCmd_Shutdown, 0); }
    RunningModule(const RunningModule&) = delete;
    RunningModule& operator=(const RunningModule&) = delete;

  private:
    ModuleLibrary& module_;
};

}  // namespace host_tool
