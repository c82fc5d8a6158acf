#include "host/process_attach.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_ATTACH) {
        AttachProcess(module);
    } else if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
        DetachProcess();
    }
    return TRUE;
}

namespace {

const ModuleLife moduleLife{DllMain};

}  // namespace
