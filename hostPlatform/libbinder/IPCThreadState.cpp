// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/IPCThreadState.h>

#include <unistd.h>

#include <atomic>

#include "transport/Router.h"

namespace android {

namespace {

// Marks every call to another process, as on a device.
constexpr uint32_t kAcceptFds = 0x10;

std::atomic<bool> gBackgroundSchedulingDisabled(false);

}  // namespace

IPCThreadState::IPCThreadState()
    : mProcess(ProcessState::self()),
      mLastError(NO_ERROR),
      mServingStackPointer(nullptr),
      mCallingPid(getpid()),
      mCallingSid(nullptr),
      mCallingUid(getuid()),
      mWorkSource(kUnsetWorkSource),
      mPropagateWorkSource(false),
      mStrictModePolicy(0),
      mLastTransactionBinderFlags(0),
      mCallRestriction(ProcessState::CallRestriction::NONE) {
    static_cast<void>(mCallRestriction);
}

IPCThreadState::~IPCThreadState() = default;

IPCThreadState* IPCThreadState::self() {
    struct Holder {
        IPCThreadState* const state = new IPCThreadState();
        ~Holder() { delete state; }
    };
    static thread_local Holder holder;
    return holder.state;
}

IPCThreadState* IPCThreadState::selfOrNull() {
    return self();
}

sp<ProcessState> IPCThreadState::process() {
    return mProcess;
}

status_t IPCThreadState::clearLastError() {
    const status_t err = mLastError;
    mLastError = NO_ERROR;
    return err;
}

pid_t IPCThreadState::getCallingPid() const {
    return mCallingPid;
}

const char* IPCThreadState::getCallingSid() const {
    return mCallingSid;
}

uid_t IPCThreadState::getCallingUid() const {
    return mCallingUid;
}

void IPCThreadState::clearCaller() {
    mCallingPid = getpid();
    mCallingSid = nullptr;
    mCallingUid = getuid();
}

int64_t IPCThreadState::clearCallingIdentity() {
    const int64_t token =
            (static_cast<int64_t>(mCallingUid) << 32) | static_cast<uint32_t>(mCallingPid);
    clearCaller();
    return token;
}

void IPCThreadState::restoreCallingIdentity(int64_t token) {
    mCallingUid = static_cast<uid_t>(token >> 32);
    mCallingSid = nullptr;
    mCallingPid = static_cast<pid_t>(token);
}

void IPCThreadState::setStrictModePolicy(int32_t policy) {
    mStrictModePolicy = policy;
}

int32_t IPCThreadState::getStrictModePolicy() const {
    return mStrictModePolicy;
}

// A token of the work source: the uid in the low word, whether it is propagated above it.
int64_t IPCThreadState::setCallingWorkSourceUid(uid_t uid) {
    const int64_t token = setCallingWorkSourceUidWithoutPropagation(uid);
    mPropagateWorkSource = true;
    return token;
}

int64_t IPCThreadState::setCallingWorkSourceUidWithoutPropagation(uid_t uid) {
    const int64_t propagated = int64_t{mPropagateWorkSource} << 32;
    const int64_t token = propagated | static_cast<uint32_t>(mWorkSource);
    mWorkSource = static_cast<int32_t>(uid);
    return token;
}

uid_t IPCThreadState::getCallingWorkSourceUid() const {
    return static_cast<uid_t>(mWorkSource);
}

int64_t IPCThreadState::clearCallingWorkSource() {
    return setCallingWorkSourceUid(static_cast<uid_t>(kUnsetWorkSource));
}

void IPCThreadState::restoreCallingWorkSource(int64_t token) {
    setCallingWorkSourceUidWithoutPropagation(static_cast<uid_t>(token));
    mPropagateWorkSource = (token >> 32) == 1;
}

void IPCThreadState::clearPropagateWorkSource() {
    mPropagateWorkSource = false;
}

bool IPCThreadState::shouldPropagateWorkSource() const {
    return mPropagateWorkSource;
}

void IPCThreadState::setLastTransactionBinderFlags(int32_t flags) {
    mLastTransactionBinderFlags = flags;
}

int32_t IPCThreadState::getLastTransactionBinderFlags() const {
    return mLastTransactionBinderFlags;
}

const void* IPCThreadState::getServingStackPointer() const {
    return mServingStackPointer;
}

void IPCThreadState::disableBackgroundScheduling(bool disable) {
    gBackgroundSchedulingDisabled = disable;
}

bool IPCThreadState::backgroundSchedulingDisabled() {
    return gBackgroundSchedulingDisabled;
}

status_t IPCThreadState::transact(int32_t handle, uint32_t code, const Parcel& data, Parcel* reply,
                                  uint32_t flags) {
    if (const status_t err = data.errorCheck(); err != NO_ERROR) return err;
    return transport::Router::instance().call(handle, code, flags | kAcceptFds, data, reply);
}

void IPCThreadState::joinThreadPool(bool) {
    transport::Router::instance().pool().join();
}

void IPCThreadState::stopProcess(bool) {
    transport::Router::instance().stop();
}

// Nothing is kept back, so there is nothing to flush.
void IPCThreadState::flushCommands() {}

}  // namespace android
