// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Condition.h>
#include <utils/Mutex.h>

#include <deque>
#include <functional>

namespace android::transport {

/**
 * The threads that serve calls from other processes. They are made when there is work and none is
 * free, up to a limit, and then stay.
 *
 * As on a device, a process that never starts its pool serves no calls; they wait. Chores (telling
 * of deaths, dropping references) are done in any case. Thread-safe.
 */
class WorkerPool {
  public:
    using Task = std::function<void()>;

    /** Calls are served from now on. */
    void start();

    void setMaxThreads(size_t count);

    void postCall(Task task);
    void postChore(Task task);

    /** Makes the calling thread serve until stop(). */
    void join();

    /** No task is begun from now on. */
    void stop();

    /** Waits a while for the threads to end what they do; some may not, for they run foreign code.
     */
    void awaitEnd();

  private:
    void addThreadLocked() REQUIRES(mLock);
    /** The next task, waiting for it; empty once stopped. */
    Task next(bool joined);
    void work(bool joined);

    Mutex mLock;
    Condition mChanged;
    std::deque<Task> mCalls GUARDED_BY(mLock);
    std::deque<Task> mChores GUARDED_BY(mLock);
    bool mStarted GUARDED_BY(mLock) = false;
    bool mStopped GUARDED_BY(mLock) = false;
    size_t mMaxThreads GUARDED_BY(mLock) = 15;  // as on a device
    size_t mThreads GUARDED_BY(mLock) = 0;      // made here, still running
    size_t mIdle GUARDED_BY(mLock) = 0;         // of those
};

}  // namespace android::transport
