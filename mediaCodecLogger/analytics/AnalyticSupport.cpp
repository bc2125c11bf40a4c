// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "ZMediaAnalyticV"

#include <mediaCodecLogger/analytics/AnalyticSupport.h>

#include <errno.h>
#include <stdarg.h>
#include <unistd.h>

#include <log/log.h>

#include <mediaCodecLogger/base/Clock.h>

namespace android {

int64_t monotonicMs() {
    return readClockMs([](int64_t seconds, int64_t nanoseconds) {
        return checkedAdd(checkedMul(seconds, 1000), nsToMs(nanoseconds));
    });
}

void appendFormat(std::string& text, const char* format, ...) {
    char buffer[256];
    va_list args;
    va_start(args, format);
    const int length = vsnprintf(buffer, sizeof(buffer), format, args);
    va_end(args);
    if (length < 0) return;
    const size_t size = static_cast<size_t>(length);
    if (size < sizeof(buffer)) {
        text.append(buffer, size);
        return;
    }
    const size_t end = text.size();
    text.resize(end + size + 1);  // one more for the terminator
    va_start(args, format);
    vsnprintf(&text[end], size + 1, format, args);
    va_end(args);
    text.resize(end + size);
}

bool openDump(FILE*& file, const char* what, const char* kind) {
    if (file != nullptr) return true;
    char path[80];
    snprintf(path, sizeof(path), "/data/tmp/dump%s_%s_%d_%d.raw", what, kind, getpid(), gettid());
    file = fopen(path, "wb");
    if (file == nullptr) {
        ALOGW("fopen fail %d", errno);
        return false;
    }
    ALOGI("fopen %s", path);
    return true;
}

void writeDump(FILE*& file, const void* data, size_t size) {
    const size_t written = fwrite(data, 1, size, file);
    if (written == size) return;
    ALOGW("fwrite fail %d ret:%zd size:%zu", errno, static_cast<ssize_t>(written), size);
    fclose(file);
    file = nullptr;
}

}  // namespace android
