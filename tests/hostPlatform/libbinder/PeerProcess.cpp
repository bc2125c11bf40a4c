// SPDX-License-Identifier: Apache-2.0
#include "tests/hostPlatform/libbinder/PeerProcess.h"

#include <binder/IServiceManager.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "tests/hostPlatform/libbinder/RuntimeFolder.h"

namespace android::test {

namespace {

const RuntimeFolder gRuntimeFolder;

}  // namespace

PeerProcess::PeerProcess(const std::string& serviceName, const char* threads)
    : mName(serviceName), mProcess({TEST_PEER, serviceName, threads}) {
    EXPECT_TRUE(mProcess.waitForOutput("ready")) << mProcess.wait(0).err;
}

sp<IBinder> PeerProcess::service() const {
    const sp<IBinder> found = defaultServiceManager()->getService(String16(mName.c_str()));
    EXPECT_NE(nullptr, found) << mName;
    return found;
}

void PeerProcess::kill() {
    mProcess.signal(SIGKILL);
    mProcess.wait();
}

void PeerProcess::leave() {
    mProcess.signal(SIGTERM);
    const ProcessResult result = mProcess.wait();
    EXPECT_EQ(0, result.exitCode) << result.err;
}

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; i++) {
        if (condition()) return true;
        usleep(10 * 1000);
    }
    return false;
}

}  // namespace android::test
