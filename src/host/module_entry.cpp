#include "host/process_attach.h"

namespace {

const StaticStage staticStage;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        AttachProcess(module);
    }
    return TRUE;
}

namespace {

// Behind the static stage, in one file: attach finds it standing, whoever calls the entry.
const ProcessAttach processAttach{DllMain};

}  // namespace
