// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/ProcessState.h>

#include "transport/Router.h"

namespace android {

ProcessState::ProcessState(const char* driver)
    : mDriverName(driver),
      mDriverFD(-1),
      mVMStart(nullptr),
      mThreadCountLock(PTHREAD_MUTEX_INITIALIZER),
      mThreadCountDecrement(PTHREAD_COND_INITIALIZER),
      mExecutingThreadsCount(0),
      mMaxThreads(15),
      mStarvationStartTimeMs(0),
      mBinderContextCheckFunc(nullptr),
      mBinderContextUserData(nullptr),
      mThreadPoolStarted(false),
      mThreadPoolSeq(1),
      mCallRestriction(CallRestriction::NONE) {}

ProcessState::~ProcessState() = default;

// Never destroyed: proxies may be let go while the process exits.
sp<ProcessState> ProcessState::self() {
    static const sp<ProcessState>& instance = *new sp<ProcessState>(new ProcessState("host"));
    return instance;
}

sp<ProcessState> ProcessState::selfOrNull() {
    return self();
}

void ProcessState::startThreadPool() {
    transport::Router::instance().pool().start();
}

status_t ProcessState::setThreadPoolMaxThreadCount(size_t maxThreads) {
    transport::Router::instance().pool().setMaxThreads(maxThreads);
    return NO_ERROR;
}

sp<IBinder> ProcessState::getStrongProxyForHandle(int32_t handle) {
    return transport::Router::instance().proxyOf(handle);
}

}  // namespace android
