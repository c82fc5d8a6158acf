#include "host/process_attach.h"

#include "link/command_queue.h"
#include "link/serial_port.h"
#include "log/zbr_log.h"
#include "settings/module_instance.h"
#include "settings/settings.h"
#include "stage/stage_data.h"
#include "worker/moves.h"

StaticStage::StaticStage() {
    MakeStageData();
    MakeCommandQueue();
    InitializeCriticalSection(&ComLock);
}

StaticStage::~StaticStage() {
    DeleteCriticalSection(&ComLock);
    FreeCommandQueue();
    ReleaseStageData();
    LogChannel.Close();
}

void AttachProcess(HINSTANCE module) {
    ModuleInstance = module;
    InitializeCriticalSection(&PortSettingsLock);
    InitializeCriticalSection(&CommandQueueLock);
    InitializeCriticalSection(&StageDataLock);
    MakeMoveLocks();
    ReadSettingsAtLoad();
}
