// SPDX-License-Identifier: Apache-2.0
// What strangers and crashes leave to the transport: a folder, and bytes.
#include "hostPlatform/libbinder/transport/RuntimeDir.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>

#include "hostPlatform/libbinder/transport/Message.h"
#include "tests/hostPlatform/libbinder/RuntimeFolder.h"
#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

namespace fs = std::filesystem;

using namespace transport;
using ::testing::ElementsAre;

class RuntimeDirTest : public ::testing::Test {
  protected:
    static RuntimeDir dirAt(const fs::path& path) {
        setenv("HOSTBINDER_DIR", path.c_str(), 1);
        return RuntimeDir();
    }

    const RuntimeFolder mFolder;
    const fs::path mRoot = mFolder.path();
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

TEST(MessageTest, whatNoContinuationMakesAMessageIsInvalid) {
    Message message(MessageKind::kCall, 1);
    message.chain = {{{7, 9}, 4}};
    message.payload.data.resize(60);
    message.payload.objects = {{4, {{7, 9}, 11}}, {28, {{8, 10}, 12}}};
    const std::vector<uint8_t> valid = encodeMessage(message);
    const auto body = static_cast<uint32_t>(valid.size() - 16);
    // Offsets: body from 16, calls at 32, payload's sizes at 56, its bytes at 64, objects at 124.
    const struct {
        const char* name;
        size_t at;
        uint32_t word;
    } cases[] = {{"giant length", 0, 0xffffffff},
                 {"body longer than its fields", 0, body + 1},
                 {"a giant number of calls", 32, 0xffffffff},
                 {"a giant number of objects", 60, 0xffffffff},
                 {"unaligned object", 124, 2},
                 {"overlapping objects", 124, 8},
                 {"object past the end", 148, 40}};
    for (const auto& [name, at, word] : cases) {
        std::vector<uint8_t> bytes = valid;
        memcpy(&bytes[at], &word, sizeof(word));
        bytes.push_back(0);
        size_t used;
        EXPECT_EQ(Decoded::kInvalid, decodeMessage(bytes.data(), bytes.size(), &message, &used))
                << name;
    }
}

}  // namespace
}  // namespace android::test
