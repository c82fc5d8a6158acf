#include "host/process_attach.h"

#include "link/com_lock.h"
#include "link/command_queue.h"
#include "log/zbr_log.h"
#include "panel/buffer_boxes.h"
#include "settings/module_instance.h"
#include "settings/settings.h"
#include "stage/stage_data.h"
#include "worker/moves.h"

StaticStage::StaticStage() {
    MakeStageData();
    MakeCommandQueue();
    MakeComLock();
}

StaticStage::~StaticStage() {
    FreeComLock();
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
    MakePanelLock();
    ReadSettingsAtLoad();
}
