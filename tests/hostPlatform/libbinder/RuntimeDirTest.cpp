// SPDX-License-Identifier: Apache-2.0
#include "hostPlatform/libbinder/transport/RuntimeDir.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using transport::ObjectAddress;
using transport::PeerId;
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

    static size_t filesIn(const fs::path& path) {
        return static_cast<size_t>(
                std::distance(fs::directory_iterator(path), fs::directory_iterator()));
    }

    fs::path mRoot;
    LogCapture mLog;
};

TEST_F(RuntimeDirTest, aFolderThatOthersCouldChangeIsRefused) {
    const fs::path open = mRoot / "open";
    fs::create_directory(open);
    chmod(open.c_str(), 0750);
    const fs::path link = mRoot / "link";
    fs::create_directory(mRoot / "target");
    chmod((mRoot / "target").c_str(), 0700);
    fs::create_directory_symlink(mRoot / "target", link);
    const fs::path file = mRoot / "file";
    close(creat(file.c_str(), 0700));
    for (const fs::path& path : {open, link, file, mRoot / "no/parent"}) {
        EXPECT_LT(dirAt(path).listenAs({1, 1}).get(), 0) << path;
        EXPECT_FALSE(dirAt(path).publish("name", {{1, 1}, 1})) << path;
        EXPECT_FALSE(mLog.take().empty()) << path;
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
    dir.publish("never", {{3, 3}, 1});
    close(creat((path / "names/.new").c_str(), 0600));
    close(creat((path / "names/garbage").c_str(), 0600));
    close(creat((path / "peers/garbage").c_str(), 0600));
    close(open((path / "lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));

    const base::unique_fd next = dir.listenAs({4, 4});
    EXPECT_GE(next.get(), 0);
    EXPECT_THAT(dir.names(), ElementsAre("alive"));
    EXPECT_EQ(2u, filesIn(path / "peers"));
    EXPECT_GE(dir.connectTo({1, 1}).get(), 0);
    EXPECT_LT(dir.connectTo({2, 2}).get(), 0);
}

}  // namespace
}  // namespace android::test
