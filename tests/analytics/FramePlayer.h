// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <tests/support/ScopedProperties.h>

namespace android::test {

/** What a codec is, as its back-end tells the analytics. */
struct CodecKind {
    const char* name;
    bool isVideo = true;
    bool isDecoder = true;
    bool isCodec2 = false;
    bool trackingOff = false;
};
inline const CodecKind kOmxVideo{"omx"};
inline const CodecKind kCodec2Video{"c2", true, true, true};
inline const CodecKind kVideoEncoder{"enc", true, false};
inline const CodecKind kAudio{"aud", false};
inline const CodecKind kUntracked{"off", true, true, false, true};

/**
 * A codec that plays frames by hand: each operation is one step in the life of the frame with that
 * media timestamp, reported at the clock's present time. Registered as long as it exists.
 */
class FramePlayer {
  public:
    explicit FramePlayer(const CodecKind& kind = kOmxVideo);
    ~FramePlayer();

    // A frame's life in order.

    /** The input buffer is about to be queued; false when the codec is not followed. */
    bool announce(long timeUs);
    /** It is queued, `decryptMs` after its announcement. */
    void queue(long timeUs);
    /** The component takes it; Codec2 does so as it is queued. */
    void handOver(long timeUs, unsigned flags = 0);
    void decode(long timeUs);
    void output(long timeUs);
    /** To be shown `leadMs` from now. */
    void render(long timeUs, int64_t leadMs);
    void renderAt(long timeUs, long renderTimeNs);
    void drop(long timeUs);

    /** Announced, queued and handed over at once. */
    void feed(long timeUs);
    /** Decoded and output at once. */
    void deliver(long timeUs);

    // Buffers on their way to the display and back; told apart by number.

    void toDisplay(uintptr_t buffer, int64_t startMs, int64_t renderMs, long mediaTimeUs = 40000);
    void fromDisplay(uintptr_t buffer, int64_t startMs, size_t ownedByComponent = 3);

    void flush() { analytics.flush(codec); }
    void buffers(unsigned port, size_t count, size_t minUndequeued = 0);

    const CodecKind kind;
    const long key;
    const sp<FakeCodec> codec;
    ZephraMediaAnalytic& analytics;
};

/** Lines of the analytics, for comparison. */
LogLine info(std::string text);
LogLine warning(std::string text);

/** The analytics on, a clock that stands still unless a case moves it, and the log captured. */
class AnalyticsTest : public ::testing::Test {
  protected:
    /** Monotonic time at the start of each case, in milliseconds. */
    static constexpr int64_t kStart = 10000;

    AnalyticsTest() { restartNumbers(); }

    void after(int64_t ms) { clock.advanceMs(ms); }
    void debug(const char* mask) { properties.set("mediaanalytic.debug", mask); }
    /** The next frame of the process is number 1. */
    void restartNumbers();

    ScopedProperties properties{{"mediaanalytic.enable", "true"}};
    LogCapture log;
    FakeClock clock{kStart};
    ZephraMediaAnalytic& analytics = ZephraMediaAnalytic::instance();
};

}  // namespace android::test
