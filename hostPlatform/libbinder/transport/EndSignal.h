// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace android::transport {

/**
 * Tells one thread that others have ended. The kernel counts the time of the wait, because programs
 * may put a clock of their own in the place of the one that conditions use.
 */
class EndSignal {
  public:
    void raise() {
        const uint64_t one = 1;
        TEMP_FAILURE_RETRY(write(mEvent.get(), &one, sizeof(one)));
    }

    /** Waits a second at most; some may not end, for they run foreign code. */
    void await() {
        pollfd event = {mEvent.get(), POLLIN, 0};
        TEMP_FAILURE_RETRY(poll(&event, 1, 1000));
    }

  private:
    const base::unique_fd mEvent{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace android::transport
