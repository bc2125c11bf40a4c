// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <binder/Binder.h>
#include <binder/IPCThreadState.h>
#include <binder/Parcel.h>
#include <utils/String8.h>

namespace android::test {

/** What TestService does; arguments and results in the order in which they are written. */
enum TestCode : uint32_t {
    kEcho = IBinder::FIRST_CALL_TRANSACTION,  // int32 -> the same
    kIdentify,                                // -> int32 own pid, calling pid, calling uid
    kFail,      // int32 status -> that status, after a reply has been written
    kRelay,     // int32 count, binders: the first relays to the rest, the last one identifies
    kAppend,    // int32, int32 ms: sleeps, then adds to the list; 0 stands for the calling pid
    kList,      // -> int64 vector
    kSleep,     // int32 ms
    kKeep,      // binder (nullable): kept in place of what was kept before
    kGiveBack,  // -> the binder that is kept
    kMake,      // -> a new TestService
    kCount,     // -> int32 TestServices alive in this process
    kPass,      // binder -> the same
};

/** Serves what the tests of the transport need, in the test and in its peer processes alike. */
class TestService : public BBinder {
  public:
    static inline std::atomic<int> alive{0};
    /** Called first by each kIdentify. */
    std::function<void()> onIdentify;

    TestService() { alive++; }

    const String16& getInterfaceDescriptor() const override {
        static const String16& descriptor = *new String16("test.ITestService");
        return descriptor;
    }
    /** Writes the arguments. */
    status_t dump(int fd, const Vector<String16>& args) override {
        for (const String16& arg : args) dprintf(fd, "<%s>", String8(arg).string());
        return OK;
    }

  protected:
    ~TestService() override { alive--; }

    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        switch (code) {
            case kEcho:
                return reply->writeInt32(data.readInt32());
            case kIdentify:
                return identify(reply);
            case kFail:
                reply->writeInt32(42);
                return data.readInt32();
            case kRelay:
                return relay(data, reply);
            case kAppend: {
                const int32_t value = data.readInt32();
                sleepFor(data);
                std::lock_guard<std::mutex> lock(mMutex);
                mList.push_back(value != 0 ? value : IPCThreadState::self()->getCallingPid());
                return OK;
            }
            case kList: {
                std::lock_guard<std::mutex> lock(mMutex);
                return reply->writeInt64Vector(mList);
            }
            case kSleep:
                sleepFor(data);
                return OK;
            case kKeep: {
                sp<IBinder> kept = data.readStrongBinder();
                std::lock_guard<std::mutex> lock(mMutex);
                std::swap(mKept, kept);
                return OK;
            }
            case kGiveBack: {
                std::lock_guard<std::mutex> lock(mMutex);
                return reply->writeStrongBinder(mKept);
            }
            case kMake:
                return reply->writeStrongBinder(new TestService());
            case kCount:
                return reply->writeInt32(alive);
            case kPass:
                return reply->writeStrongBinder(data.readStrongBinder());
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

  private:
    static void sleepFor(const Parcel& data) {
        usleep(static_cast<useconds_t>(data.readInt32()) * 1000);
    }
    status_t identify(Parcel* reply) {
        if (onIdentify) onIdentify();
        const IPCThreadState* const thread = IPCThreadState::self();
        reply->writeInt32(getpid());
        reply->writeInt32(thread->getCallingPid());
        return reply->writeInt32(static_cast<int32_t>(thread->getCallingUid()));
    }
    status_t relay(const Parcel& data, Parcel* reply) {
        const int32_t count = data.readInt32();
        if (count == 0) return identify(reply);
        const sp<IBinder> next = data.readStrongBinder();
        if (next == nullptr) return BAD_TYPE;
        Parcel request;
        request.writeInt32(count - 1);
        for (int32_t i = 1; i < count; i++) request.writeStrongBinder(data.readStrongBinder());
        return next->transact(kRelay, request, reply);
    }

    std::mutex mMutex;
    std::vector<int64_t> mList;
    sp<IBinder> mKept;
};

}  // namespace android::test
