// SPDX-License-Identifier: Apache-2.0
#include "hostPlatform/libbinder/transport/RuntimeDir.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using transport::RuntimeDir;

class RuntimeDirTest : public ::testing::Test {
  protected:
    RuntimeDirTest() {
        char path[] = "/tmp/runtime_dir_XXXXXX";
        mRoot = mkdtemp(path);
    }
    ~RuntimeDirTest() override { fs::remove_all(mRoot); }

    static RuntimeDir dirAt(const fs::path& path) {
        setenv("HOSTBINDER_DIR", path.c_str(), 1);
        return RuntimeDir();
    }

    fs::path mRoot;
    LogCapture mLog;
};

TEST_F(RuntimeDirTest, aFolderThatOthersCouldChangeIsRefused) {
    for (const char* name : {"open", "target"}) fs::create_directory(mRoot / name);
    fs::permissions(mRoot / "open", fs::perms(0750));
    fs::permissions(mRoot / "target", fs::perms(0700));
    fs::create_directory_symlink(mRoot / "target", mRoot / "link");
    close(creat((mRoot / "file").c_str(), 0700));
    for (const char* name : {"open", "link", "file", "no/parent"}) {
        EXPECT_LT(dirAt(mRoot / name).listenAs({1, 1}).get(), 0) << name;
        EXPECT_FALSE(dirAt(mRoot / name).publish("name", {{1, 1}, 1})) << name;
        EXPECT_FALSE(mLog.take().empty()) << name;
    }
}

TEST_F(RuntimeDirTest, whatCrashesLeftIsSweptAndNothingElse) {
    // Longer than the address of a socket may be.
    const fs::path path = mRoot / std::string(100, 'a') / std::string(100, 'b') / "dir";
    fs::create_directories(path.parent_path());
    const RuntimeDir dir = dirAt(path);
    const base::unique_fd alive = dir.listenAs({1, 1});
    dir.publish("alive", {{1, 1}, 1});
    dir.listenAs({2, 2}).reset();  // closed, but its file stays
    dir.publish("dead", {{2, 2}, 1});
    for (const char* left : {"names/.new", "names/garbage", "peers/garbage"}) {
        close(creat((path / left).c_str(), 0600));
    }
    const base::unique_fd next = dir.listenAs({4, 4});
    EXPECT_GE(next.get(), 0);
    EXPECT_THAT(dir.names(), ElementsAre("alive"));
    EXPECT_EQ(2, std::distance(fs::directory_iterator(path / "peers"), {}));
    EXPECT_GE(dir.connectTo({1, 1}).get(), 0);
    EXPECT_LT(dir.connectTo({2, 2}).get(), 0);
}

}  // namespace
}  // namespace android::test
