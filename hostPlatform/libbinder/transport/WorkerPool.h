// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Condition.h>
#include <utils/Mutex.h>

#include <deque>
#include <functional>

#include "EndSignal.h"

namespace android::transport {

/**
 * The threads to which calls, death notices and the last references of peers are delivered. They
 * are made when there is work and none is free, up to a limit, and then stay.
 *
 * As on a device, nothing is delivered before the pool is started or a thread has joined it.
 * Thread-safe.
 */
class WorkerPool {
  public:
    using Task = std::function<void()>;

    void start();

    void setMaxThreads(size_t count);

    void post(Task task);

    /** Makes the calling thread serve until stop(). */
    void join();

    /** No task is begun from now on. Waits a while for those under way. */
    void stop();

  private:
    void addThreadLocked() REQUIRES(mLock);
    /** The next task, waiting for it; empty once stopped. */
    Task next(bool joined);
    void work(bool joined);

    EndSignal mEnded;
    Mutex mLock;
    Condition mChanged;
    std::deque<Task> mTasks GUARDED_BY(mLock);
    bool mStarted GUARDED_BY(mLock) = false;
    bool mStopped GUARDED_BY(mLock) = false;
    size_t mMaxThreads GUARDED_BY(mLock) = 15;  // as on a device
    size_t mThreads GUARDED_BY(mLock) = 0;      // made here, still running
    size_t mIdle GUARDED_BY(mLock) = 0;         // of those
    size_t mMayStay GUARDED_BY(mLock) = 0;      // of those, when the pool is stopped by one of them
};

}  // namespace android::transport
