#include "host/module_library.h"

#include <stdexcept>
#include <string>

#include "host/library.h"

namespace host_tool {

const char* const ModuleFileName = OVISK_MODULE_FILE;

template <typename Function>
void ModuleLibrary::Find(Function& function, const char* name) {
    function = reinterpret_cast<Function>(FindExport(library_, name));
    if (function == nullptr) {
        throw std::runtime_error(std::string("the module has no export ") + name);
    }
}

ModuleLibrary::ModuleLibrary(const std::filesystem::path& path) : library_(LoadLibraryFile(path)) {
    Find(OVISK_ZbrCmd, "OVISK_ZbrCmd");
    Find(ZbOvisk_GetOviskData, "ZbOvisk_GetOviskData");
    Find(ZbOvisk_GetAndClearLatches, "ZbOvisk_GetAndClearLatches");
    Find(ZbOvisk_CncGotoAbsoluteNotifyWorld, "ZbOvisk_CncGotoAbsoluteNotifyWorld");
    Find(ZbOvisk_SetLight, "ZbOvisk_SetLight");
    Find(ZbOvisk_ReadStage, "ZbOvisk_ReadStage");
    Find(ZbOvisk_ReadHealth, "ZbOvisk_ReadHealth");
}

ModuleLibrary::~ModuleLibrary() {
    UnloadLibraryFile(library_);
}

ZbOviskStage ModuleLibrary::Stage() const {
    ZbOviskStage stage{};
    stage.size = sizeof stage;
    ZbOvisk_ReadStage(&stage);
    return stage;
}

ZbOviskHealth ModuleLibrary::Health() const {
    ZbOviskHealth health{};
    health.size = sizeof health;
    ZbOvisk_ReadHealth(&health);
    return health;
}

}  // namespace host_tool
