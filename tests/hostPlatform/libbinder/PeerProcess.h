// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "tests/hostPlatform/libbinder/TestService.h"
#include "tests/support/Process.h"

namespace android::test {

/** A binder_test_peer, killed with this object. */
class PeerProcess {
  public:
    /** Started and ready. |threads| says what serves in it: "pool" or "joined", its main thread. */
    explicit PeerProcess(const std::string& serviceName, const char* threads = "pool");

    pid_t pid() const { return mProcess.pid(); }
    /** Its TestService; fails the test if it is not found. */
    sp<IBinder> service() const;

    void kill();
    /** Lets it exit by itself; fails the test if it does not do so in good order. */
    void leave();

  private:
    const std::string mName;
    Process mProcess;
};

/** True once |condition| is; false if that takes ten seconds. */
bool eventually(const std::function<bool()>& condition);

}  // namespace android::test
