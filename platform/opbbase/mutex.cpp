#include "ormeldb/platform/opbbase.h"

#include <cerrno>

pthread_mutex_t g_cfgParseMutex = PTHREAD_MUTEX_INITIALIZER;

uint32_t XOS_MutexLock(pthread_mutex_t *pstMutex) {
    return static_cast<uint32_t>(pstMutex != nullptr ? pthread_mutex_lock(pstMutex) : EINVAL);
}

uint32_t XOS_MutexUnlock(pthread_mutex_t *pstMutex) {
    return static_cast<uint32_t>(pstMutex != nullptr ? pthread_mutex_unlock(pstMutex) : EINVAL);
}
