// SPDX-License-Identifier: Apache-2.0
// A process for the tests of the transport: serves a TestService under the name given, until its
// standard input ends; then it leaves through exit() with all its connections open.
#include "tests/hostPlatform/libbinder/TestService.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace {

// Sockets and files of the process that started this one.
int inheritedDescriptors() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (target.find("socket:") == 0 || target.find(getenv("HOSTBINDER_DIR")) == 0 ||
            target.find("anon_inode:[eventfd]") == 0) {
            fprintf(stderr, "inherited %s\n", target.c_str());
            count++;
        }
    }
    return count;
}

void awaitEndOfInput() {
    char byte;
    while (read(STDIN_FILENO, &byte, 1) > 0) {
    }
}

}  // namespace

int main(int argc, char** argv) {
    using namespace android;
    if (argc != 3) return 2;
    if (inheritedDescriptors() > 0) return 4;
    const sp<IBinder> service = new test::TestService();
    if (defaultServiceManager()->addService(String16(argv[1]), service) != OK) return 1;
    const bool usesPool = strcmp(argv[2], "pool") == 0;
    if (usesPool) ProcessState::self()->startThreadPool();
    puts("ready");
    fflush(stdout);
    if (usesPool) {
        awaitEndOfInput();
        return 0;
    }
    std::thread stopper([] {
        awaitEndOfInput();
        IPCThreadState::self()->stopProcess();
    });
    IPCThreadState::self()->joinThreadPool();
    stopper.join();
    return 0;
}
