// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/DumpFile.h>

#include <errno.h>
#include <unistd.h>

#include <log/log.h>

namespace android::analytics {

bool DumpFile::open(const char* kind) {
    if (mFile != nullptr) return true;
    char path[80];
    snprintf(path, sizeof(path), "/data/tmp/dump%s_%s_%d_%d.raw", mWhat, kind, getpid(), gettid());
    mFile = fopen(path, "wb");
    if (mFile == nullptr) {
        ALOGW("fopen fail %d", errno);
        return false;
    }
    ALOGI("fopen %s", path);
    return true;
}

void DumpFile::write(const void* data, size_t size) {
    const size_t written = fwrite(data, 1, size, mFile);
    if (written == size) return;
    ALOGW("fwrite fail %d ret:%zd size:%zu", errno, static_cast<ssize_t>(written), size);
    close();
}

void DumpFile::close() {
    if (mFile != nullptr) fclose(mFile);
    mFile = nullptr;
}

}  // namespace android::analytics
