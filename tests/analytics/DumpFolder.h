// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace android::test {

/**
 * The folder that dumps go to, made if it can be and removed again if it was made, this process's
 * dumps in any case; cases that run at the same time use it in turn. Without the right to make it,
 * exists() is false.
 */
class DumpFolder {
  public:
    DumpFolder() {
        mLock = open("/tmp/analytics_test.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666);
        flock(mLock, LOCK_EX);
        mMade[0] = mkdir("/data", 0755) == 0;
        mMade[1] = mkdir("/data/tmp", 0755) == 0;
    }
    ~DumpFolder() {
        const std::string ours = "_" + std::to_string(getpid()) + "_";
        std::error_code error;
        for (const auto& file : std::filesystem::directory_iterator("/data/tmp", error)) {
            if (file.path().string().find(ours) != std::string::npos) {
                std::filesystem::remove(file, error);
            }
        }
        if (mMade[1]) rmdir("/data/tmp");
        if (mMade[0]) rmdir("/data");
        close(mLock);
    }
    DumpFolder(const DumpFolder&) = delete;
    DumpFolder& operator=(const DumpFolder&) = delete;

    bool exists() const { return access("/data/tmp", W_OK) == 0; }

    /** The dump of this thread, for example of "input_video". */
    static std::string path(const std::string& what) {
        return "/data/tmp/dump" + what + "_" + std::to_string(getpid()) + "_" +
               std::to_string(gettid()) + ".raw";
    }

    static std::string content(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    int mLock;
    bool mMade[2];
};

}  // namespace android::test
