// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android-base/unique_fd.h>
#include <poll.h>

#include <vector>

#include "EndSignal.h"

namespace android::transport {

/** A thread that waits for descriptors. Thread-safe. */
class Reader {
  public:
    /** What it waits for and what is done then; called on the thread only. */
    class Source {
      public:
        /** Adds what to wait for, and says for how long, -1 for ever; false to end the thread. */
        virtual bool prepare(std::vector<pollfd>* fds, int* timeoutMs) = 0;
        /** The same descriptors, with what happened. */
        virtual void handle(const std::vector<pollfd>& fds) = 0;

      protected:
        ~Source() = default;
    };

    /** Called once. */
    void start(Source* source);

    /** Makes the thread prepare anew. */
    void wake();

    /** Waits a while for the thread to end. */
    void awaitEnd() { mEnded.await(); }

  private:
    void run(Source* source);

    const base::unique_fd mWake{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    EndSignal mEnded;
};

}  // namespace android::transport
