// SPDX-License-Identifier: Apache-2.0
#include "tests/hostPlatform/libbinder/PeerProcess.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace android::test {

namespace {

// The folder is made before any test; a process that a death test starts anew inherits it.
class RuntimeFolder : public ::testing::Environment {
  public:
    RuntimeFolder() {
        const char* const inherited = getenv(kVariable);
        char path[] = "/tmp/binder_test_XXXXXX";
        mIsOurs = inherited == nullptr;
        if (mIsOurs && mkdtemp(path) == nullptr) abort();
        mPath = mIsOurs ? path : inherited;
        setenv(kVariable, mPath.c_str(), 1 /*overwrite*/);
        setenv("HOSTBINDER_DIR", mPath.c_str(), 1 /*overwrite*/);
    }

    void TearDown() override {
        if (mIsOurs) std::filesystem::remove_all(mPath);
    }

  private:
    static constexpr char kVariable[] = "BINDER_TEST_DIR";
    std::string mPath;
    bool mIsOurs;
};

::testing::Environment* const gEnvironment =
        ::testing::AddGlobalTestEnvironment(new RuntimeFolder());

std::string peerProgram() {
    char path[PATH_MAX] = {};
    if (readlink("/proc/self/exe", path, sizeof(path) - 1) < 0) abort();
    const std::string self = path;
    return self.substr(0, self.rfind('/') + 1) + "binder_test_peer";
}

}  // namespace

PeerProcess::PeerProcess(const std::string& serviceName, const char* threads) : mName(serviceName) {
    const std::string program = peerProgram();
    int toPeer[2];
    int fromPeer[2];
    if (pipe2(toPeer, O_CLOEXEC) != 0 || pipe2(fromPeer, O_CLOEXEC) != 0) abort();
    mPid = fork();
    if (mPid == 0) {
        dup2(toPeer[0], STDIN_FILENO);
        dup2(fromPeer[1], STDOUT_FILENO);
        execl(program.c_str(), program.c_str(), serviceName.c_str(), threads, nullptr);
        _exit(127);
    }
    close(toPeer[0]);
    close(fromPeer[1]);
    mStdin.reset(toPeer[1]);
    char ready[6] = {};
    EXPECT_EQ(6, TEMP_FAILURE_RETRY(read(fromPeer[0], ready, sizeof(ready))))
            << program << " does not start";
    close(fromPeer[0]);
}

PeerProcess::~PeerProcess() {
    kill();
}

sp<IBinder> PeerProcess::service() const {
    const sp<IBinder> found = defaultServiceManager()->getService(String16(mName.c_str()));
    EXPECT_NE(nullptr, found) << mName;
    return found;
}

void PeerProcess::kill() {
    if (mPid < 0) return;
    ::kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    mPid = -1;
}

int PeerProcess::leave() {
    mStdin.reset();
    int status = -1;
    waitpid(mPid, &status, 0);
    mPid = -1;
    return status;
}

bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000; i++) {
        if (condition()) return true;
        usleep(10 * 1000);
    }
    return false;
}

}  // namespace android::test
