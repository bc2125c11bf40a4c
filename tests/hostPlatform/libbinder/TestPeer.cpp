// SPDX-License-Identifier: Apache-2.0
// A process for the tests of the transport: serves a TestService under the name given, until its
// standard input ends; then it leaves through exit() with all its connections open.
#include "tests/hostPlatform/libbinder/TestService.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <stdio.h>
#include <unistd.h>

int main(int argc, char** argv) {
    using namespace android;
    if (argc != 2) return 2;
    const sp<IBinder> service = new test::TestService();
    if (defaultServiceManager()->addService(String16(argv[1]), service) != OK) return 1;
    ProcessState::self()->startThreadPool();
    puts("ready");
    fflush(stdout);
    char byte;
    while (read(STDIN_FILENO, &byte, 1) > 0) {
    }
    return 0;
}
