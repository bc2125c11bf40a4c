// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

namespace android {

/** Holds a reader-writer lock, taken by `acquire`, as long as it lives. */
template <int (*acquire)(pthread_rwlock_t*)>
class ScopedRwLock {
  public:
    explicit ScopedRwLock(pthread_rwlock_t& lock) : mLock(lock) { acquire(&mLock); }
    ~ScopedRwLock() { pthread_rwlock_unlock(&mLock); }
    ScopedRwLock(const ScopedRwLock&) = delete;
    ScopedRwLock& operator=(const ScopedRwLock&) = delete;

  private:
    pthread_rwlock_t& mLock;
};
using ReadLock = ScopedRwLock<pthread_rwlock_rdlock>;
using WriteLock = ScopedRwLock<pthread_rwlock_wrlock>;

}  // namespace android
