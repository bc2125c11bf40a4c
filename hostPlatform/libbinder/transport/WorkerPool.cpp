// SPDX-License-Identifier: Apache-2.0
#include "WorkerPool.h"

#include <pthread.h>
#include <unistd.h>

#include <thread>

namespace android::transport {

namespace {

constexpr int kEndTries = 1000;
constexpr useconds_t kEndPauseUs = 1000;

thread_local bool gIsWorker = false;

}  // namespace

void WorkerPool::start() {
    Mutex::Autolock lock(mLock);
    mStarted = true;
    if (!mCalls.empty()) addThreadLocked();
    mChanged.broadcast();
}

void WorkerPool::setMaxThreads(size_t count) {
    Mutex::Autolock lock(mLock);
    mMaxThreads = count;
}

void WorkerPool::postCall(Task task) {
    Mutex::Autolock lock(mLock);
    mCalls.push_back(std::move(task));
    if (mStarted) addThreadLocked();
    mChanged.broadcast();
}

void WorkerPool::postChore(Task task) {
    Mutex::Autolock lock(mLock);
    mChores.push_back(std::move(task));
    addThreadLocked();
    mChanged.broadcast();
}

// Adds a thread unless the free ones suffice for the tasks that wait.
void WorkerPool::addThreadLocked() {
    // One more than the limit, because the thread that starts the pool does not count on a device.
    const size_t limit = mStarted ? mMaxThreads + 1 : 1;
    const size_t waiting = mChores.size() + (mStarted ? mCalls.size() : 0);
    if (mStopped || waiting <= mIdle || mThreads >= limit) return;
    mThreads++;
    std::thread([this] { work(false); }).detach();
}

void WorkerPool::join() {
    work(true);
}

WorkerPool::Task WorkerPool::next(bool joined) {
    Mutex::Autolock lock(mLock);
    for (;;) {
        if (mStopped) return nullptr;
        std::deque<Task>* queue = &mChores;
        if (queue->empty() && (joined || mStarted)) queue = &mCalls;
        if (!queue->empty()) {
            Task task = std::move(queue->front());
            queue->pop_front();
            return task;
        }
        if (!joined) mIdle++;
        mChanged.wait(mLock);
        if (!joined) mIdle--;
    }
}

void WorkerPool::work(bool joined) {
    if (!joined) {
        gIsWorker = true;
        pthread_setname_np(pthread_self(), "Binder");
    }
    while (const Task task = next(joined)) task();
    if (joined) return;
    Mutex::Autolock lock(mLock);
    mThreads--;
}

void WorkerPool::stop() {
    Mutex::Autolock lock(mLock);
    mStopped = true;
    mChanged.broadcast();
}

void WorkerPool::awaitEnd() {
    const size_t own = gIsWorker ? 1 : 0;
    for (int i = 0; i < kEndTries; i++) {
        {
            Mutex::Autolock lock(mLock);
            if (mThreads <= own) return;
        }
        usleep(kEndPauseUs);
    }
}

}  // namespace android::transport
