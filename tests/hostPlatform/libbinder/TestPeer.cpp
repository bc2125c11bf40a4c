// SPDX-License-Identifier: Apache-2.0
// A process for the tests of the transport: serves a TestService under the name given, until
// SIGTERM; then it leaves through exit() with all its connections open.
#include "tests/hostPlatform/libbinder/TestService.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>

#include <thread>

int main(int argc, char** argv) {
    using namespace android;
    if (argc != 3) return 2;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &end, nullptr);  // in the threads to come as well
    const auto awaitEnd = [&end] {
        int number;
        sigwait(&end, &number);
    };

    const sp<IBinder> service = new test::TestService();
    if (defaultServiceManager()->addService(String16(argv[1]), service) != OK) return 1;
    const bool usesPool = strcmp(argv[2], "pool") == 0;
    if (usesPool) ProcessState::self()->startThreadPool();
    puts("ready");
    fflush(stdout);
    if (usesPool) {
        awaitEnd();
        return 0;
    }
    std::thread stopper([&awaitEnd] {
        awaitEnd();
        IPCThreadState::self()->stopProcess();
    });
    IPCThreadState::self()->joinThreadPool();
    stopper.join();
    return 0;
}
