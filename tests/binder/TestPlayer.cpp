// SPDX-License-Identifier: Apache-2.0
// A process with codecs, for the tests of the service: plays made-up streams until SIGTERM.
//
//     binder_test_player PACKAGE KIND...
//
// KIND: video, audio; late: video whose second frame comes late; busy: video that is flushed and
// reconfigured all the time.
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <android/log.h>
#include <binder/ProcessState.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

namespace android {

namespace {

std::atomic<bool> gStop{false};

struct Codec {
    explicit Codec(const std::string& codecKind) : kind(codecKind) { configure(); }

    void configure() {
        if (kind == "audio") {
            logger->configure("c2.test.aac.decoder", "audio/mp4a-latm", 0, true, 0, 0, nullptr,
                              true);
        } else {
            const char* const mime = (configurations++ % 2) != 0 ? "video/avc" : "video/hevc";
            logger->configure("c2.test.decoder", mime, 0, true, 0, 0, nullptr, true);
        }
        logger->profileP2End();
        frame = 0;
    }

    void changeFormat() {
        sp<AMessage> format = new AMessage;
        format->setInt32("width", 1280);
        format->setInt32("height", 720);
        logger->updateFormatChanged(format);
    }

    void playFrame() {
        const long pts = frame * 20000;
        logger->logInputBufferBitrate(1000, pts, false, false);
        if (frame == 0 && kind != "audio") changeFormat();
        if (frame == 1 && kind == "late") usleep(1100 * 1000);
        logger->updatePTSTime(pts, false, 1);
        logger->updateFrameDropCounters(pts, true);
        logger->resetConsecutiveFrameDropFlag(-1, pts, false, 1);
        ++frame;
        if (kind != "busy") return;
        if (frame % 10 == 0) logger->updateMetricsForFlush();
        if (frame % 25 == 0) {
            logger->logMetrics();
            configure();
        }
    }

    const std::string kind;
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, 10057);
    int configurations = 0;
    long frame = 0;
};

int play(const std::vector<std::string>& kinds) {
    ProcessState::self()->startThreadPool();
    signal(SIGTERM, [](int) { gStop = true; });
    std::vector<std::thread> threads;
    for (const std::string& kind : kinds) {
        threads.emplace_back([&kind] {
            Codec codec(kind);
            while (!gStop) {
                codec.playFrame();
                if (codec.frame == 2) fprintf(stderr, "playing %s\n", kind.c_str());
                usleep(kind == "busy" ? 1000 : 20000);
            }
            codec.logger->logMetrics();
        });
    }
    for (std::thread& thread : threads) thread.join();
    return 0;
}

}  // namespace

}  // namespace android

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    // The library takes the package name from the command line, which therefore begins with it.
    if (strcmp(argv[0], argv[1]) != 0) {
        argv[0] = argv[1];
        execv("/proc/self/exe", argv);
        return 1;
    }
    return android::play({argv + 2, argv + argc});
}
