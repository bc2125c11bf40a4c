// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <utils/Mutex.h>

#include <atomic>
#include <functional>
#include <vector>

namespace android::test {

/** What TestService does; arguments and results in the order in which they are written. */
enum TestCode : uint32_t {
    kEcho = IBinder::FIRST_CALL_TRANSACTION,  // int32 -> the same
    kIdentify,                                // -> int32 own pid, calling pid, calling uid, flags
    kFail,       // int32 status -> that status, after a reply has been written
    kRelay,      // int32 count, binders: the first relays to the rest, the last one identifies
    kAppend,     // int32, int32 ms: sleeps, then adds to the list; 0 stands for the calling pid
    kList,       // -> int64 vector
    kSleep,      // int32 ms
    kKeep,       // binder (nullable): kept in place of what was kept before
    kGiveBack,   // -> the binder that is kept
    kMake,       // -> a new TestService
    kCount,      // -> int32 TestServices alive in this process
    kPass,       // binder -> the same
    kReplySize,  // int32 bytes -> as many
};

/** Serves what the tests of the transport need, in the test and in its peer processes alike. */
class TestService : public BBinder {
  public:
    TestService();

    const String16& getInterfaceDescriptor() const override;

    static int alive();

    /** Writes the arguments. */
    status_t dump(int fd, const Vector<String16>& args) override;

    /** Called first by each kIdentify. */
    std::function<void()> onIdentify;

  protected:
    ~TestService() override;
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;

  private:
    status_t identify(Parcel* reply, uint32_t flags);
    status_t relay(const Parcel& data, Parcel* reply, uint32_t flags);

    Mutex mLock;
    std::vector<int64_t> mList GUARDED_BY(mLock);
    sp<IBinder> mKept GUARDED_BY(mLock);
};

inline void write(Parcel& parcel, int32_t value) {
    parcel.writeInt32(value);
}
inline void write(Parcel& parcel, const sp<IBinder>& value) {
    parcel.writeStrongBinder(value);
}

/** Writes integers and objects, for callTest(). */
template <typename... Values>
std::function<void(Parcel&)> arguments(const Values&... values) {
    return [=](Parcel& parcel) { (write(parcel, values), ...); };
}

/** Calls |code| with |arguments| written to the request. */
status_t callTest(const sp<IBinder>& target, uint32_t code, Parcel* reply,
                  const std::function<void(Parcel&)>& arguments = nullptr, uint32_t flags = 0);

/** The int32 that |code| answers to int32 |argument|, or the negative status. */
int32_t callInt(const sp<IBinder>& target, uint32_t code, int32_t argument = 0);

}  // namespace android::test
