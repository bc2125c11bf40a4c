// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <hostplatform/Audio.h>
#include <hostplatform/Display.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <tests/support/MetricsCapture.h>
#include <tests/support/RecordingService.h>

namespace android::test {

using Lines = std::vector<std::string>;

/** No process has this pid, so that the package name is always the default one. */
constexpr int kPid = 99999999;
#define PID "99999999"
#define PKG "com.android.mediaplayer"

/** The arguments of configure(), of a hardware video decoder where a case does not say otherwise.
 */
struct CodecSetup {
    const char* codecName = "c2.vendor.avc.decoder";
    const char* mime = "video/avc";
    unsigned flags = 0;
    bool isDecoder = true;
    bool logging = true;
    int maxWidth = 0;
    int maxHeight = 0;
};
inline const CodecSetup kAudio{"c2.vendor.aac.decoder", "audio/mp4a-latm"};
inline const CodecSetup kTunneled{"c2.vendor.avc.decoder", "video/avc", 1};

/** A process with the given command line, for as long as it lives. */
class NamedProcess {
  public:
    explicit NamedProcess(const char* name);
    ~NamedProcess();
    int pid() const { return mPid; }

  private:
    pid_t mPid = -1;
};

/**
 * One codec under test, fed by hand: the clock stands still unless a case moves it, log lines and
 * metrics records are captured, and no service is registered unless a case does so.
 */
class LoggerTest : public ::testing::Test {
  protected:
    LoggerTest();

    void create(int pid = kPid);
    void configure(const CodecSetup& setup = {});
    sp<RecordingService> registerService();
    void registerService(const sp<IBinder>& service);

    void after(int64_t ms) { clock.advanceMs(ms); }
    void input(long pts, size_t size = 1000) {
        logger->logInputBufferBitrate(size, pts, secure, secureMemory);
    }
    void output(long pts) { logger->updatePTSTime(pts, false, 1); }
    void render(long pts);
    void drop(int frames = 1) {
        while (frames-- > 0) logger->updateFrameDropCounters(0, false);
    }
    /** Input, output and render of one frame at once. */
    void frame(long pts);
    /** `count` frames whose timestamps go on from the last one in real time, `stepUs` apart. */
    void play(int count, long stepUs);
    /** Configures, shows one frame at timestamp 0 and waits until drops and repeats count. */
    void settle(const CodecSetup& setup = {});
    void changeFormat(int width, int height);
    /** The component's statistics. */
    void vendor(const char* metrics);

    /** The log since the last call, "I text" a line, or "I/tag text" under another tag. */
    Lines logged();
    /** The lines of logged() that hold `word`. */
    Lines loggedWith(const char* word);
    /** The records since the last call: "schema name value unit [dimension] key=value... flag". */
    Lines sent();
    std::string status() { return logger->getStatus().c_str(); }
    std::string report() { return logger->logMetrics().c_str(); }

    FakeClock clock{1000};
    LogCapture log;
    MetricsCapture metrics;
    sp<FakeCodec> codec = new FakeCodec;
    sp<MediaCodecLogger> logger;
    bool secure = false;
    bool secureMemory = false;
    long nextPts = 0;
};

}  // namespace android::test
