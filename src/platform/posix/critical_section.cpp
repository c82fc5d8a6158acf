#include "platform/posix/clock.h"
#include "platform/win32.h"

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_destroy(&section->mutex);
}

void EnterCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    posix::Lock(section->mutex);
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    return pthread_mutex_trylock(&section->mutex) == 0 ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    posix::Unlock(section->mutex);
}
