// SPDX-License-Identifier: Apache-2.0
#include "tests/hostPlatform/libbinder/TestService.h"

#include <binder/IPCThreadState.h>
#include <stdio.h>
#include <unistd.h>
#include <utils/String8.h>

namespace android::test {

namespace {

std::atomic<int> gAlive(0);

}  // namespace

TestService::TestService() {
    gAlive++;
}

TestService::~TestService() {
    gAlive--;
}

int TestService::alive() {
    return gAlive;
}

const String16& TestService::getInterfaceDescriptor() const {
    static const String16& descriptor = *new String16("test.ITestService");
    return descriptor;
}

status_t TestService::dump(int fd, const Vector<String16>& args) {
    for (const String16& arg : args) dprintf(fd, "<%s>", String8(arg).string());
    return OK;
}

status_t TestService::identify(Parcel* reply, uint32_t flags) {
    if (onIdentify) onIdentify();
    const IPCThreadState* const thread = IPCThreadState::self();
    reply->writeInt32(getpid());
    reply->writeInt32(thread->getCallingPid());
    reply->writeInt32(static_cast<int32_t>(thread->getCallingUid()));
    return reply->writeInt32(static_cast<int32_t>(flags));
}

status_t TestService::relay(const Parcel& data, Parcel* reply, uint32_t flags) {
    const int32_t count = data.readInt32();
    if (count == 0) return identify(reply, flags);
    const sp<IBinder> next = data.readStrongBinder();
    if (next == nullptr) return BAD_TYPE;
    Parcel request;
    request.writeInt32(count - 1);
    for (int32_t i = 1; i < count; i++) request.writeStrongBinder(data.readStrongBinder());
    Parcel answer;
    if (const status_t status = next->transact(kRelay, request, &answer); status != OK)
        return status;
    return reply->appendFrom(&answer, 0, answer.dataSize());
}

status_t TestService::onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    switch (code) {
        case kEcho:
            return reply->writeInt32(data.readInt32());
        case kIdentify:
            return identify(reply, flags);
        case kFail:
            reply->writeInt32(42);
            return data.readInt32();
        case kRelay:
            return relay(data, reply, flags);
        case kAppend: {
            const int32_t value = data.readInt32();
            usleep(static_cast<useconds_t>(data.readInt32()) * 1000);
            Mutex::Autolock lock(mLock);
            mList.push_back(value != 0 ? value : IPCThreadState::self()->getCallingPid());
            return OK;
        }
        case kList: {
            Mutex::Autolock lock(mLock);
            return reply->writeInt64Vector(mList);
        }
        case kSleep:
            usleep(static_cast<useconds_t>(data.readInt32()) * 1000);
            return OK;
        case kKeep: {
            sp<IBinder> kept = data.readStrongBinder();
            Mutex::Autolock lock(mLock);
            std::swap(mKept, kept);
            return OK;
        }
        case kGiveBack: {
            Mutex::Autolock lock(mLock);
            return reply->writeStrongBinder(mKept);
        }
        case kMake:
            return reply->writeStrongBinder(new TestService());
        case kCount:
            return reply->writeInt32(alive());
        case kPass:
            return reply->writeStrongBinder(data.readStrongBinder());
        case kReplySize: {
            const std::string text(static_cast<size_t>(data.readInt32()), 'x');
            return reply->write(text.data(), text.size());
        }
        default:
            return BBinder::onTransact(code, data, reply, flags);
    }
}

status_t callTest(const sp<IBinder>& target, uint32_t code, Parcel* reply,
                  const std::function<void(Parcel&)>& arguments, uint32_t flags) {
    Parcel request;
    if (arguments) arguments(request);
    return target->transact(code, request, reply, flags);
}

int32_t callInt(const sp<IBinder>& target, uint32_t code, int32_t argument) {
    Parcel reply;
    const status_t status = callTest(target, code, &reply, arguments(argument));
    return status == OK ? reply.readInt32() : status;
}

}  // namespace android::test
