// SPDX-License-Identifier: Apache-2.0
// What the sources of MediaCodecLogger share; private to them.
#pragma once

#include <pthread.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>

#include <android/log.h>
#include <media/stagefright/foundation/AString.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <utils/StrongPointer.h>

namespace android {

class IMediaCodecLoggerService;

/**
 * Looks the logger service up; `service` is null when it is not registered.
 *
 * @return false when there is no service manager to ask
 */
bool lookUpLoggerService(sp<IMediaCodecLoggerService>& service);

inline bool contains(const AString& text, const char* word) {
    return text.find(word) >= 0;
}

// Timestamps come from the media and may be anything, so sums and differences of them wrap.

constexpr int64_t wrapAdd(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

constexpr int64_t wrapSub(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

/** Adds to a 32-bit counter, wrapping; the upper half of `n` is dropped. */
constexpr int32_t wrapAdd32(int32_t a, uint64_t n) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(n));
}

/** Frames per second of `frames` frames that span `spanUs` microseconds. */
constexpr double framesPerSecond(uint64_t frames, int64_t spanUs) {
    return static_cast<double>(frames) * 1000000.0 / static_cast<double>(spanUs);
}

/** A key of the system log. Longer ones are cut at 149 characters. */
class MetricKey {
  public:
    __attribute__((format(printf, 2, 3))) explicit MetricKey(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(mText, kMaxLength + 1, format, arguments);
        va_end(arguments);
    }
    const char* c_str() const { return mText; }

  private:
    static constexpr size_t kMaxLength = 149;
    char mText[kMaxLength + 1];
};

/** Holds a reader-writer lock, taken by `acquire`, as long as it lives. */
template <int (*acquire)(pthread_rwlock_t*)>
class ScopedRwLock {
  public:
    explicit ScopedRwLock(pthread_rwlock_t& lock) : mLock(lock) { acquire(&mLock); }
    ~ScopedRwLock() { pthread_rwlock_unlock(&mLock); }
    ScopedRwLock(const ScopedRwLock&) = delete;
    ScopedRwLock& operator=(const ScopedRwLock&) = delete;

  private:
    pthread_rwlock_t& mLock;
};
using ReadLock = ScopedRwLock<pthread_rwlock_rdlock>;
using WriteLock = ScopedRwLock<pthread_rwlock_wrlock>;

/**
 * Ends the process through the platform's fatal log unless `ok`. `line` and `condition` are what
 * crash reports of this library are grouped by; they stay as they are when the code around them
 * changes.
 */
#define LOGGER_CHECK(ok, line, condition)                                        \
    do {                                                                         \
        if (!(ok)) {                                                             \
            __android_log_assert("!(" condition ")", "MediaCodecLogger", "%s",   \
                                 "media/mediaCodecLogger/MediaCodecLogger:" line \
                                 " CHECK(" condition ") failed.");               \
        }                                                                        \
    } while (false)

}  // namespace android
