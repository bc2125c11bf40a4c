// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>
#include <sys/types.h>

#include <functional>
#include <string>

#include "tests/hostPlatform/libbinder/TestService.h"

namespace android::test {

/** A binder_test_peer, killed with this object. */
class PeerProcess {
  public:
    /** Started and ready. |threads| says what serves in it: "pool" or "joined", its main thread. */
    explicit PeerProcess(const std::string& serviceName, const char* threads = "pool");
    ~PeerProcess();

    pid_t pid() const { return mPid; }
    /** Its TestService; fails the test if it is not found. */
    sp<IBinder> service() const;

    void kill();
    /** Lets it exit by itself; gives its wait status. */
    int leave();

  private:
    const std::string mName;
    pid_t mPid = -1;
    base::unique_fd mStdin;
};

/** True once |condition| is; false if that takes ten seconds. */
bool eventually(const std::function<bool()>& condition);

}  // namespace android::test
