#include "host/process_attach.h"

#include "link/com_lock.h"
#include "link/command_queue.h"
#include "log/zbr_log.h"
#include "panel/buffer_boxes.h"
#include "settings/settings.h"
#include "stage/stage_data.h"

void AttachProcess(HINSTANCE module) {
    MakeStageData();
    MakeCommandQueue();
    MakeComLock();
    ModuleInstance = module;
    InitializeCriticalSection(&PortSettingsLock);
    InitializeCriticalSection(&CommandQueueLock);
    InitializeCriticalSection(&StageDataLock);
    InitializeCriticalSection(&HealthLock);
    MakePanelLock();
    ReadSettingsAtLoad();
}

void DetachProcess() {
    // A host may have used the line after its stop; the next load has to find the port free.
    ClosePortWhenFree();
    FreeComLock();
    FreeCommandQueue();
    ReleaseStageData();
    LogChannel.Close();
}
