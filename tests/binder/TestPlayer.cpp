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
#include <string>
#include <thread>
#include <vector>

#include <binder/ProcessState.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

using namespace android;

namespace {

std::atomic<bool> gStop{false};
std::atomic<int> gToPlay{0};  // codecs that have not yet shown a second frame

void play(const std::string& kind) {
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, 10057);
    const bool isAudio = kind == "audio", isBusy = kind == "busy";
    for (int configuration = 0; !gStop; ++configuration) {
        const char* const mime = isAudio                  ? "audio/mp4a-latm"
                                 : configuration % 2 != 0 ? "video/avc"
                                                          : "video/hevc";
        logger->configure("c2.test.decoder", mime, 0, true, 0, 0, nullptr, true);
        logger->profileP2End();
        for (long frame = 0; !gStop && !(isBusy && frame == 25); ++frame) {
            const long pts = frame * 20000;
            logger->logInputBufferBitrate(1000, pts, false, false);
            if (frame == 0 && !isAudio) {
                sp<AMessage> format = new AMessage;
                format->setInt32("width", 1280);
                format->setInt32("height", 720);
                logger->updateFormatChanged(format);
            }
            if (frame == 1 && kind == "late") usleep(1100 * 1000);
            logger->updatePTSTime(pts, false, 1);
            logger->updateFrameDropCounters(pts, true);
            logger->resetConsecutiveFrameDropFlag(-1, pts, false, 1);
            if (frame == 1 && configuration == 0 && --gToPlay == 0) fprintf(stderr, "all play\n");
            if (isBusy && frame % 10 == 9) logger->updateMetricsForFlush();
            usleep(isBusy ? 1000 : 20000);
        }
        logger->logMetrics();
    }
}

}  // namespace

int main(int argc, char** argv) {
    // The library takes the package name from the command line, which therefore begins with it.
    if (strcmp(argv[0], argv[1]) != 0) {
        argv[0] = argv[1];
        execv("/proc/self/exe", argv);
        return 1;
    }
    signal(SIGTERM, [](int) { gStop = true; });
    ProcessState::self()->startThreadPool();
    gToPlay = argc - 2;
    std::vector<std::thread> threads;
    for (int i = 2; i < argc; ++i) threads.emplace_back(play, argv[i]);
    for (std::thread& thread : threads) thread.join();
    return 0;
}
