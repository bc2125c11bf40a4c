// SPDX-License-Identifier: Apache-2.0
// Counts the locks that each thread holds by coming before the C library's functions.
#include "Fuzz.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>

namespace {

thread_local int tHeld = 0;

template <typename Lock>
class Function {
  public:
    constexpr explicit Function(const char* name) : mName(name) {}

    int operator()(Lock* lock) {
        Pointer next = mNext.load(std::memory_order_relaxed);
        if (next == nullptr) {
            next = reinterpret_cast<Pointer>(dlsym(RTLD_NEXT, mName));
            mNext.store(next, std::memory_order_relaxed);
        }
        return next(lock);
    }

  private:
    using Pointer = int (*)(Lock*);
    const char* const mName;
    std::atomic<Pointer> mNext{nullptr};
};

template <typename Lock>
int counted(Function<Lock>& function, Lock* lock, int change) {
    const int result = function(lock);
    if (result == 0) tHeld += change;
    return result;
}

}  // namespace

int heldLocks() {
    return tHeld;
}

#define COUNTED(name, type, change)             \
    extern "C" int name(type* lock) noexcept {  \
        static Function<type> function(#name);  \
        return counted(function, lock, change); \
    }

COUNTED(pthread_mutex_lock, pthread_mutex_t, 1)
COUNTED(pthread_mutex_trylock, pthread_mutex_t, 1)
COUNTED(pthread_mutex_unlock, pthread_mutex_t, -1)
COUNTED(pthread_rwlock_rdlock, pthread_rwlock_t, 1)
COUNTED(pthread_rwlock_wrlock, pthread_rwlock_t, 1)
COUNTED(pthread_rwlock_unlock, pthread_rwlock_t, -1)
