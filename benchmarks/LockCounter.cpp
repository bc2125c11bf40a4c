// SPDX-License-Identifier: Apache-2.0
#include <benchmarks/LockCounter.h>

#include <dlfcn.h>
#include <pthread.h>

namespace {

thread_local int64_t tTaken = 0;

/** Takes a lock through the C library's function, looked up once. */
template <typename Lock>
int take(int (*&function)(Lock*), const char* name, Lock* lock) {
    ++tTaken;
    if (function == nullptr) function = reinterpret_cast<int (*)(Lock*)>(dlsym(RTLD_NEXT, name));
    return function(lock);
}

int (*gMutexLock)(pthread_mutex_t*) = nullptr;
int (*gReadLock)(pthread_rwlock_t*) = nullptr;
int (*gWriteLock)(pthread_rwlock_t*) = nullptr;

}  // namespace

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    return take(gMutexLock, "pthread_mutex_lock", mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    return take(gReadLock, "pthread_rwlock_rdlock", lock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    return take(gWriteLock, "pthread_rwlock_wrlock", lock);
}

}  // extern "C"

namespace android::bench {

int64_t locksTaken() {
    return tTaken;
}

}  // namespace android::bench
