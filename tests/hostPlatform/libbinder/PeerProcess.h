// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/hostPlatform/libbinder/TestService.h"

#include <signal.h>

#include <binder/IServiceManager.h>
#include <gtest/gtest.h>

#include "tests/hostPlatform/libbinder/RuntimeFolder.h"
#include "tests/support/Process.h"

namespace android::test {

/** A binder_test_peer, killed with this object. To be made before the test uses binder itself. */
class PeerProcess {
  public:
    /** Started and ready. */
    explicit PeerProcess(const std::string& serviceName) : mName(serviceName.c_str()) {
        static const RuntimeFolder folder;
        mProcess = std::make_unique<Process>(std::vector<std::string>{TEST_PEER, serviceName});
        EXPECT_TRUE(mProcess->waitForOutput("ready")) << mProcess->wait(0).err;
    }

    pid_t pid() const { return mProcess->pid(); }
    /** Its TestService; fails the test if it is not found. */
    sp<IBinder> service() const {
        const sp<IBinder> found = defaultServiceManager()->getService(mName);
        EXPECT_NE(nullptr, found);
        return found;
    }
    void kill() {
        mProcess->signal(SIGKILL);
        mProcess->wait();
    }
    /** Lets it exit by itself; fails the test if it does not do so in good order. */
    void leave() {
        mProcess->signal(SIGTERM);
        const ProcessResult result = mProcess->wait();
        EXPECT_EQ(0, result.exitCode) << result.err;
    }

  private:
    const String16 mName;
    std::unique_ptr<Process> mProcess;
};

/** True once `condition` is; false if that takes ten seconds. */
inline bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; i++, usleep(10 * 1000)) {
        if (condition()) return true;
    }
    return false;
}

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

/** Calls `code` with `arguments` written to the request. */
inline status_t callTest(const sp<IBinder>& target, uint32_t code, Parcel* reply,
                         const std::function<void(Parcel&)>& arguments = nullptr,
                         uint32_t flags = 0) {
    Parcel request;
    if (arguments) arguments(request);
    return target->transact(code, request, reply, flags);
}

/** The int32 that `code` answers to int32 `argument`, or the negative status. */
inline int32_t callInt(const sp<IBinder>& target, uint32_t code, int32_t argument = 0) {
    Parcel reply;
    const status_t status = callTest(target, code, &reply, arguments(argument));
    return status == OK ? reply.readInt32() : status;
}

}  // namespace android::test
