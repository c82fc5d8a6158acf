#include <exception>

#include "native/clock.h"
#include "platform/win32.h"

namespace {

/// Windows would wait for ever or crash: here it shows at once.
pthread_mutex_t& Made(LPCRITICAL_SECTION section) {
    if (!section->made) {
        std::terminate();
    }
    return section->mutex;
}

}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    section->made = true;
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_destroy(&Made(section));
    section->made = false;
}

void EnterCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    posix::Lock(Made(section));
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    return pthread_mutex_trylock(&Made(section)) == 0 ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) ZB_NO_THREAD_SAFETY_ANALYSIS {
    posix::Unlock(Made(section));
}
