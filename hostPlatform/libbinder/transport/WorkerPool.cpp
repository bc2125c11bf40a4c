// SPDX-License-Identifier: Apache-2.0
#include "WorkerPool.h"

#include <pthread.h>

#include <thread>

namespace android::transport {

namespace {

thread_local bool gIsWorker = false;

}  // namespace

void WorkerPool::start() {
    Mutex::Autolock lock(mLock);
    mStarted = true;
    addThreadLocked();
    mChanged.broadcast();
}

void WorkerPool::setMaxThreads(size_t count) {
    Mutex::Autolock lock(mLock);
    mMaxThreads = count;
}

void WorkerPool::post(Task task) {
    Mutex::Autolock lock(mLock);
    mTasks.push_back(std::move(task));
    addThreadLocked();
    mChanged.broadcast();
}

// Adds a thread unless the free ones suffice for the tasks that wait.
void WorkerPool::addThreadLocked() {
    // One more than the limit, because the thread that starts the pool does not count on a device.
    const bool full = mThreads >= mMaxThreads + 1;
    if (!mStarted || mStopped || full || mTasks.size() <= mIdle) return;
    mThreads++;
    std::thread([this] { work(false); }).detach();
}

void WorkerPool::join() {
    work(true);
}

WorkerPool::Task WorkerPool::next(bool joined) {
    Mutex::Autolock lock(mLock);
    while (mTasks.empty() && !mStopped) {
        if (!joined) mIdle++;
        mChanged.wait(mLock);
        if (!joined) mIdle--;
    }
    if (mStopped) return nullptr;
    Task task = std::move(mTasks.front());
    mTasks.pop_front();
    return task;
}

void WorkerPool::work(bool joined) {
    if (!joined) {
        gIsWorker = true;
        pthread_setname_np(pthread_self(), "Binder");
    }
    while (const Task task = next(joined)) task();
    if (joined) return;
    Mutex::Autolock lock(mLock);
    if (--mThreads <= mMayStay) mEnded.raise();
}

void WorkerPool::stop() {
    {
        Mutex::Autolock lock(mLock);
        mStopped = true;
        mMayStay = gIsWorker ? 1 : 0;
        mChanged.broadcast();
        if (mThreads <= mMayStay) return;
    }
    mEnded.await();
}

}  // namespace android::transport
