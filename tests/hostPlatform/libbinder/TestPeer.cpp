// SPDX-License-Identifier: Apache-2.0
// A process for the tests of the transport: serves a TestService under the name given, until
// SIGTERM; then it leaves through exit() with all its connections open.
#include "tests/hostPlatform/libbinder/TestService.h"

#include <signal.h>
#include <sys/prctl.h>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

int main(int argc, char** argv) {
    using namespace android;
    if (argc != 2) return 2;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &end, nullptr);  // in the threads to come as well
    const sp<IBinder> service = new test::TestService();
    if (defaultServiceManager()->addService(String16(argv[1]), service) != OK) return 1;
    ProcessState::self()->startThreadPool();
    puts("ready");
    fflush(stdout);
    int number;
    sigwait(&end, &number);
    return 0;
}
