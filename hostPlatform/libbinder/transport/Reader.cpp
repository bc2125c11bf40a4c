// SPDX-License-Identifier: Apache-2.0
#include "Reader.h"

#include <errno.h>
#include <pthread.h>

#include <thread>

namespace android::transport {

void Reader::start(Source* source) {
    std::thread([this, source] { run(source); }).detach();
}

void Reader::wake() {
    const uint64_t one = 1;
    TEMP_FAILURE_RETRY(write(mWake.get(), &one, sizeof(one)));
}

void Reader::run(Source* source) {
    pthread_setname_np(pthread_self(), "BinderReader");
    for (;;) {
        std::vector<pollfd> fds;
        int timeoutMs = -1;
        if (!source->prepare(&fds, &timeoutMs)) break;
        fds.push_back({mWake.get(), POLLIN, 0});
        poll(fds.data(), fds.size(), timeoutMs);
        uint64_t ignored;
        TEMP_FAILURE_RETRY(read(mWake.get(), &ignored, sizeof(ignored)));
        fds.pop_back();
        source->handle(fds);
    }
    mEnded.raise();
}

}  // namespace android::transport
