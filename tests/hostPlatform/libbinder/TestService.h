// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include <binder/Binder.h>
#include <binder/IPCThreadState.h>
#include <binder/Parcel.h>

namespace android::test {

/** What TestService does; arguments and results in the order in which they are written. */
enum TestCode : uint32_t {
    kEcho = IBinder::FIRST_CALL_TRANSACTION,  // int32 -> the same
    kFail,     // int32 status -> that status, after a reply has been written
    kRelay,    // int32 count, binders: the first relays to the rest, the last one
               // -> int32 own pid, calling pid, calling uid
    kAppend,   // int32: added to the list, or in place of 0 the calling pid
    kList,     // -> int64 vector
    kBlock,    // returns after kUnblock only
    kUnblock,  // lets all go that wait
    kBlocked,  // -> int32 how many wait
    kKeep,     // binder (nullable) -> the one that was kept before
    kMake,     // -> a new TestService
    kCount,    // -> int32 TestServices alive in this process
    kPass,     // binder -> the same
};

/** Serves what the tests of the transport need, in the test and in its peer processes alike. */
class TestService : public BBinder {
  public:
    static inline std::atomic<int> alive{0};
    /** Called where a kRelay ends. */
    std::function<void()> onRelayed = [] {};

    TestService() { alive++; }

    const String16& getInterfaceDescriptor() const override {
        static const String16& descriptor = *new String16("test.ITestService");
        return descriptor;
    }

  protected:
    ~TestService() override { alive--; }

    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        switch (code) {
            case kEcho:
                return reply->writeInt32(data.readInt32());
            case kFail:
                reply->writeInt32(42);
                return data.readInt32();
            case kRelay:
                return relay(data, reply);
            case kMake:
                return reply->writeStrongBinder(new TestService());
            case kCount:
                return reply->writeInt32(alive);
            case kPass:
                return reply->writeStrongBinder(data.readStrongBinder());
            default:
                return useState(code, data, reply, flags);
        }
    }

  private:
    status_t relay(const Parcel& data, Parcel* reply) {
        const int32_t count = data.readInt32();
        if (count == 0) {
            onRelayed();
            const IPCThreadState* const thread = IPCThreadState::self();
            reply->writeInt32(getpid());
            reply->writeInt32(thread->getCallingPid());
            return reply->writeInt32(static_cast<int32_t>(thread->getCallingUid()));
        }
        const sp<IBinder> next = data.readStrongBinder();
        if (next == nullptr) return BAD_TYPE;
        Parcel request;
        request.writeInt32(count - 1);
        for (int32_t i = 1; i < count; i++) request.writeStrongBinder(data.readStrongBinder());
        return next->transact(kRelay, request, reply);
    }
    status_t useState(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
        sp<IBinder> kept;  // released after the lock
        std::unique_lock<std::mutex> lock(mMutex);
        switch (code) {
            case kAppend: {
                const int32_t value = data.readInt32();
                mList.push_back(value != 0 ? value : IPCThreadState::self()->getCallingPid());
                return OK;
            }
            case kList:
                return reply->writeInt64Vector(mList);
            case kBlock:
                mBlocked++;
                mUnblocked.wait(lock, [this] { return mBlocked == 0; });
                return OK;
            case kUnblock:
                mBlocked = 0;
                mUnblocked.notify_all();
                return OK;
            case kBlocked:
                return reply->writeInt32(mBlocked);
            case kKeep:
                kept = std::exchange(mKept, data.readStrongBinder());
                return reply->writeStrongBinder(kept);
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

    std::mutex mMutex;
    std::condition_variable mUnblocked;
    int32_t mBlocked = 0;
    std::vector<int64_t> mList;
    sp<IBinder> mKept;
};

}  // namespace android::test
