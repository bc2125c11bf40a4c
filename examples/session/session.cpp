// SPDX-License-Identifier: Apache-2.0
// The least that a player tells the library: ten seconds of video in three, with a drop on the way.
// The event lines go to the log (stderr on a host), the summary to stdout.
#include <limits>
#include <memory>

#include <stdio.h>
#include <time.h>
#include <unistd.h>

#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

using namespace android;

namespace {

constexpr long kFrameUs = 33'333;
constexpr int kFrames = 301;

/** In settling, right after the start, drops do not count. */
constexpr int kDropped = 250;

void sleepMs(long ms) {
    const timespec time{0, ms * 1'000'000};
    nanosleep(&time, nullptr);
}

}  // namespace

int main() {
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(-1, getuid());
    // The fourth argument: a decoder. The back-end, the seventh, matters to the frame analytics
    // only.
    logger->configure("c2.vendor.avc.decoder", "video/avc", 0, true, 0, 0, nullptr, true);
    logger->profileP2End();
    logger->profileP3Start();
    logger->profileP3End();

    sp<AMessage> format = new AMessage;
    format->setInt32("width", 1920);
    format->setInt32("height", 1080);
    logger->updateFormatChanged(format);
    for (int i = 0; i < kFrames; ++i) {
        const long timeUs = i * kFrameUs;
        logger->logInputBufferBitrate(20'000, timeUs, false, false);
        logger->updatePTSTime(timeUs, false, 1);
        const bool rendered = i != kDropped;
        logger->updateFrameDropCounters(timeUs, rendered);
        if (rendered) logger->resetConsecutiveFrameDropFlag(-1, timeUs, false, 1);
        sleepMs(10);
    }

    fputs(logger->getStatus().c_str(), stdout);
    logger->profileMCStopBegin();
    logger->profileMCStopEnd();
    puts(logger->logMetrics().c_str());
    return 0;
}
