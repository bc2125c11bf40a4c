// SPDX-License-Identifier: Apache-2.0
// Whole sessions: events in; every line, every record and the summary out.
#include <math.h>

#include <regex>

#include "LoggerTest.h"

namespace android::test {

class SessionTest : public LoggerTest {
  protected:
    /** The start of every session: 5 ms of P2, 15 of P3, and an input 20 ms later. */
    void start(const CodecSetup& setup = {}) {
        configure(setup);
        after(5);
        logger->profileP2End();
        logger->profileP3Start();
        after(15);
        logger->profileP3End();
        after(20);
    }
    /** The first frame of a stream at 1040: ready 30 ms after its input, rendered 10 ms later. */
    void firstFrame(int width, int height) {
        input(0);
        after(30);
        changeFormat(width, height);
        output(0);
        after(10);
        render(0);
    }
    /** start() and firstFrame(), whose lines and records other cases show. */
    void startQuietly(const CodecSetup& setup, int width, int height) {
        start(setup);
        firstFrame(width, height);
        log.take();
    }
    /** `count` frames like those of play(), of which none is rendered. */
    void playDropping(int count, long stepUs) {
        while (count-- > 0) {
            clock.advanceUs(stepUs);
            nextPts += stepUs;
            input(nextPts);
            output(nextPts);
            drop();
        }
    }
    static std::string join(const Lines& lines) {
        std::string text;
        for (const auto& line : lines) text += line + "\n";
        return text;
    }
};

// 381 frames, 16.667 ms apart, at 1080 + 16.667 k. Settling ends with frame 31 at 1596, the first
// 501 ms after the first render, so that every later drop counts. Runs: 17 = 10 + 5 + 2, 3 = 2 + 1.
TEST_F(SessionTest, video60fpsWithDrops) {
    const auto service = registerService();
    service->oldestAudioCodec = "mp4a";
    start();
    firstFrame(1920, 1080);
    play(60, 16667);
    playDropping(17, 16667);
    play(100, 16667);
    playDropping(3, 16667);
    play(200, 16667);
    // Of 361 rendered frames.
    vendor("CodecNonFatalErrorCount=2;HWCRenderFrameCount=357;MaxConsecutiveFramesDropped=4;");
    logger->profileMCStopBegin();
    after(501);
    logger->profileMCStopEnd();
    const std::string summary = report();
    // Bitrate: 299 inputs of 1000 bytes in 5006 ms. Played: 380 x 16.667 ms.
    EXPECT_EQ(join(logged()), R"(I [BRISK] HW.c2.video.avc P2 + 1000
I [BRISK] HW.c2.video.avc P2 - 1005
D Got zephra_media_codec_logger Service. Calling PID = 99999999
I [BRISK] HW.c2.video.avc P3 + 1005
I [BRISK] HW.c2.video.avc P3 - 1020
I [BRISK] HW.c2.video.avc Got First Input Frame 1040 pts:0
I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 0
I [BRISK] HW.c2.video.avc Got First Frame Ready 1070(30)
I Rendering first frame after starting or flushing.
I [BRISK] HW.c2.video.avc Got First Frame Render 1080(40), renderNum = 1
I 99999999.HW.c2.video.avc Resolution change from 0x0 to 1920x1080 took = 16
I W.mcfd17.99999999.HW.c2.video.avc Dropped 20 frames
I W.mcfd17.99999999.HW.c2.video.avc.bitrateInKbps = 477
I 4 frames were dropped in SurfaceFlinger or HWC.
I MC Stop Time(start: 7413, stop:7914 :501 <profileMCStopEnd 1462>

I 99999999.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 6333
I 99999999.HW.c2.video.avc.StreamAvgFramerate = 60.003
I 99999999.HW.c2.video.avc.videoResolution.FHD = 6333
I 99999999.HW.c2.video.avc.StreamFramerate = 59.999
I 99999999.HW.c2.video.avc.AspectRatio = 1.778
I 99999999.HW.c2.video.avc.OneConsecutiveFramesDropped = 1
I 99999999.HW.c2.video.avc.TwoConsecutiveFramesDropped = 2
I 99999999.HW.c2.video.avc.FiveConsecutiveFramesDropped = 1
I 99999999.HW.c2.video.avc.TenConsecutiveFramesDropped = 1
I 99999999.HW.c2.video.avc.TotalFramesDropped = 24
I 99999999.HW.c2.video.avc.MaxConsecutiveFramesDropped = 17
I 99999999.HW.c2.video.avc.BRISK-P5Ms = 40
I 99999999.HW.c2.video.avc.BRISK-P2Ms = 5
I 99999999.HW.c2.video.avc.BRISK-P3Ms = 15
I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 30
I 99999999.HW.c2.video.avc.TotalMediaCodecStopTimeMs = 501
I 99999999.HW.c2.video.avc.CodecNonFatalErrorCount = 2
I 99999999.HW.c2.video.avc.StreamAvgBitrateInKbps = 477
)");
    EXPECT_EQ(join(sent()), R"(c48a/2/02330410 FHDRampupTime 516 ms [HW_avc] 0
j2w8/2/02330410 VideoCodec 6333 ms [HW_avc] 0
qkuh/2/02330410 TotalVideoPlaybackTimeMs 6333 ms [HW_avc] 0
21qt/2/02330410 StreamAvgFramerate 60 fps [avc] fps=60 1
k29r/2/02330410 videoResolution 6333 ms [FHD.60] 0
lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=1 1
lxcd/2/02330410 FramedropType 2 frames [HW_avc] ConsecFD=2 1
lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=5 1
lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=10 1
tbo7/2/02330470 FramedropSource 4 frames [HW_avc] FdType=SFAndHWCDrops 1
tbo7/2/02330470 FramedropSource 20 frames [HW_avc] FdType=AppAndMcDrops 1
w9lq/2/02330410 TotalFramesDropped 24 frames [HW_avc] 1
x28y/2/02330470 TotalFrameDrops 24 frames [HW] audioCodec=mp4a videoCodec=avc displayFormat= framerate=60 duration=0-5 1
lxcd/2/02330410 FramedropType 17 frames [HW_avc] ConsecFD=max 1
csyv/2/02330410 FirstFrameReadyMs 30 ms [HW_avc] 0
pb8a/2/02330410 FirstFrameRenderMs 40 ms [HW_avc] 0
6snt/2/02330410 CodecNonFatalErrorCount 2 frames [HW_avc] media=video 1
jn5x/2/02330410 AvgBitrate 477 kbps [HW_avc] media=video 1
)");
    EXPECT_EQ(summary, PKG
              ".HW.c2.video.avc:videoResolution.FHD=6333:OneConsecutiveFramesDropped=1:"
              "TwoConsecutiveFramesDropped=2:FiveConsecutiveFramesDropped=1:"
              "TenConsecutiveFramesDropped=1:DisplayFramesDropped=4:"
              "MediaCodecFramesDropped=20:TotalFramesDropped=24:"
              "MaxConsecutiveFramesDropped=17:BRISK-P5Ms=40:BRISK-P2Ms=5:BRISK-P3Ms=15:"
              "FirstFrameReadyMs=30:TotalMediaCodecStopTimeMs=501:CodecNonFatalErrorCount=2:"
              "StreamAvgBitrateInKbps=477");
    EXPECT_EQ(join(service->take()),
              "registerClient(client)\ngetOldestAudioClientCodec()\n"
              "onFirstFrameRendered(client)\nunregisterClient(client)\n");
}

TEST_F(SessionTest, videoOf4Seconds) {
    startQuietly({}, 1280, 720);
    output(4000999);
    log.take();
    logger->profileMCStopBegin();
    after(500);
    EXPECT_EQ(report(), PKG
              ".HW.c2.video.avc:BRISK-P2Ms=5:BRISK-P3Ms=15:FirstFrameReadyMs=30:"
              "TotalMediaCodecStopTimeMs=18446744073709550536");
    EXPECT_EQ(join(logged()), R"(I 99999999.HW.c2.video.avc.BRISK-P2Ms = 5
I 99999999.HW.c2.video.avc.BRISK-P3Ms = 15
I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 30
I 99999999.HW.c2.video.avc.TotalMediaCodecStopTimeMs = -1080
)");
    EXPECT_EQ(join(sent()), "");
}

TEST_F(SessionTest, playback_countsFrom5001MsToADay) {
    constexpr int64_t kDayMs = 86400000;
    const std::string first = "FirstFrameReadyMs 0|FirstFrameRenderMs 0|";
    const auto video = [&](const std::string& ms) {
        return "VideoCodec " + ms + "|TotalVideoPlaybackTimeMs " + ms +
               "|StreamAvgFramerate 0|videoResolution " + ms + "|" + first;
    };
    const struct {
        CodecSetup setup;
        int64_t playedMs;
        bool rendered;
        std::string records;
    } kCases[] = {
            {{}, 5000, true, ""},
            {{}, 5001, false, ""},
            {{}, 5001, true, video("5001")},
            {{}, kDayMs - 1, true, video("86399999")},
            {{}, kDayMs, true, first},
            {kAudio, 5000, true, ""},
            {kAudio, 5001, false, "TotalAudioPlaybackTimeMs 5001|AudioCodec 5001|"},
            {kAudio, kDayMs - 1, true, "TotalAudioPlaybackTimeMs 86399999|AudioCodec 86399999|"},
            {kAudio, kDayMs, true, ""},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.playedMs);
        configure(c.setup);
        input(0);
        output(0);
        if (c.rendered) render(0);
        for (int64_t ms = 5000; ms < c.playedMs; ms += 5000) output(ms * 1000);
        output(c.playedMs * 1000);
        report();
        std::string records;
        for (const auto& record : metrics.take()) {
            records += record.name + " " + std::to_string(static_cast<long>(record.value)) + "|";
        }
        EXPECT_EQ(records, c.records);
    }

    // The classes of a session of a day are reported one by one; the rate is then unknown.
    configure();
    frame(0);
    for (int64_t ms = 5000; ms < kDayMs; ms += 5000) output(ms * 1000);
    changeFormat(1920, 1080);
    output(kDayMs * 1000 - 3000000);
    output(kDayMs * 1000 + 1000);
    log.take();
    EXPECT_EQ(report(), PKG
              ".HW.c2.video.avc:videoResolution.SD=86395000:"
              "videoResolution.FHD=5001:BRISK-P5Ms=0:BRISK-P2Ms="
              "18446744073709550616:BRISK-P3Ms=0:FirstFrameReadyMs=0");
    EXPECT_EQ(join(sent()), R"(k29r/2/02330410 videoResolution 86395000 ms [SD.0] 0
k29r/2/02330410 videoResolution 5001 ms [FHD.0] 0
csyv/2/02330410 FirstFrameReadyMs 0 ms [HW_avc] 0
pb8a/2/02330410 FirstFrameRenderMs 0 ms [HW_avc] 0
)");
}

// 240 inputs at once with 20 ms between their timestamps: 50 fps. 6 s, though only every third
// frame is reported.
TEST_F(SessionTest, tunneledVideo) {
    start(kTunneled);
    log.take();
    for (int i = 0; i < 240; ++i) input(i * 20000L);
    changeFormat(1280, 720);
    for (int i = 0; i <= 100; ++i) {
        logger->updateFrameDropCounters(i * 60000L, true);
        logger->resetConsecutiveFrameDropFlag(-1, i * 60000L, true, 3);
        after(60);
    }
    vendor("TunnelFrameDropCount=4;HWCRenderFrameCount=1");
    const std::string summary = report();
    EXPECT_EQ(join(logged()), R"(I [BRISK] tunneled.HW.c2.video.avc Got First Input Frame 1040 pts:0
I updateFormatChanged width = 1280 height = 720, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
I Rendering first frame after starting or flushing.
I updatePTSTime [tunneled.HW.c2.video.avc] First PTS after Flush or reset = 0
I [BRISK] tunneled.HW.c2.video.avc Got First Frame Ready 1040(0)
I [BRISK] tunneled.HW.c2.video.avc Got First Frame Render 1040(0), renderNum = 3
W MediaCodecLoggerService in NULL
I 99999999.tunneled.HW.c2.video.avc Resolution change from 0x0 to 1280x720 took = 60
I 99999999.tunneled.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 6000
I 99999999.tunneled.HW.c2.video.avc.StreamAvgFramerate = 50.000
I 99999999.tunneled.HW.c2.video.avc.videoResolution.HD = 6000
I 99999999.tunneled.HW.c2.video.avc.StreamFramerate = 50.000
I 99999999.tunneled.HW.c2.video.avc.AspectRatio = 1.778
I 99999999.tunneled.HW.c2.video.avc.TotalFramesDropped = 4
I 99999999.tunneled.HW.c2.video.avc.MaxConsecutiveFramesDropped = 0
I 99999999.tunneled.HW.c2.video.avc.BRISK-P5Ms = 0
I 99999999.tunneled.HW.c2.video.avc.BRISK-P2Ms = 5
I 99999999.tunneled.HW.c2.video.avc.BRISK-P3Ms = 15
)");
    EXPECT_EQ(join(sent()), R"(j2w8/2/02330410 VideoCodec 6000 ms [HW_avc_tunneled] 0
qkuh/2/02330410 TotalVideoPlaybackTimeMs 6000 ms [HW_avc_tunneled] 0
21qt/2/02330410 StreamAvgFramerate 50 fps [avc] fps=50 1
k29r/2/02330410 videoResolution 6000 ms [HD.50] 0
w9lq/2/02330410 TotalFramesDropped 4 frames [HW_avc_tunneled] 1
x28y/2/02330470 TotalFrameDrops 4 frames [HW_tunneled] audioCodec= videoCodec=avc displayFormat= framerate=50 duration=0-5 1
lxcd/2/02330410 FramedropType 0 frames [HW_avc_tunneled] ConsecFD=max 1
)");
    EXPECT_EQ(summary, PKG
              ".tunneled.HW.c2.video.avc:videoResolution.HD=6000:TotalFramesDropped=4:"
              "MaxConsecutiveFramesDropped=0:BRISK-P5Ms=0:BRISK-P2Ms=5:BRISK-P3Ms=15");
}

// 10 fps, 2 s in each class. The first frames of FHD and UHD come 2.1 and 4.1 s after the first.
TEST_F(SessionTest, secureVideoOnA4KScreen) {
    hostplatform::setDisplaySize(3840, 2160);
    secure = secureMemory = true;
    startQuietly({"OMX.vendor.hevc", "video/hevc", 0, true, true, 3840, 2160}, 1280, 720);
    play(20, 100000);
    changeFormat(1920, 1080);
    play(20, 100000);
    changeFormat(3840, 2160);
    play(20, 100000);
    const std::string summary = report();
    // Bitrate: 51 inputs of 1000 bytes in 5040 ms.
    EXPECT_EQ(
            join(logged()),
            R"(I 99999999.4K.secure.HW.omx.video.hevc Resolution change from 0x0 to 1280x720 took = 100
I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
I 99999999.4K.secure.HW.omx.video.hevc.framerate = 10.000 fps
I 99999999.4K.secure.HW.omx.video.hevc Resolution change from 1280x720 to 1920x1080 took = 100
I updateFormatChanged width = 3840 height = 2160, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
I 99999999.4K.secure.HW.omx.video.hevc.framerate = 10.000 fps
I 99999999.4K.secure.HW.omx.video.hevc Resolution change from 1920x1080 to 3840x2160 took = 100
I 99999999.4K.secure.HW.omx.video.hevc.bitrateInKbps = 80
I 99999999.4K.secure.HW.omx.video.hevc.TotalVideoPlaybackTimeMs = 6000
I 99999999.4K.secure.HW.omx.video.hevc.StreamAvgFramerate = 10.000
I 99999999.4K.secure.HW.omx.video.hevc.videoResolution.HD = 2000
I 99999999.4K.secure.HW.omx.video.hevc.videoResolution.FHD = 2000
I 99999999.4K.secure.HW.omx.video.hevc.videoResolution.UHD = 2000
I 99999999.4K.secure.HW.omx.video.hevc.StreamFramerate = 0.000
I 99999999.4K.secure.HW.omx.video.hevc.AspectRatio = 1.778
I 99999999.4K.secure.HW.omx.video.hevc.BRISK-P5Ms = 40
I 99999999.4K.secure.HW.omx.video.hevc.BRISK-P2Ms = 5
I 99999999.4K.secure.HW.omx.video.hevc.BRISK-P3Ms = 15
I 99999999.4K.secure.HW.omx.video.hevc.FirstFrameReadyMs = 30
I 99999999.4K.secure.HW.omx.video.hevc.StreamAvgBitrateInKbps = 80
)");
    EXPECT_EQ(join(sent()), R"(c48a/2/02330410 FHDRampupTime 2100 ms [HW_hevc_4K_secure] 0
p61w/2/02330410 UHDRampupTime 4100 ms [HW_hevc_4K_secure] 0
j2w8/2/02330410 VideoCodec 6000 ms [HW_hevc_4K_secure] 0
qkuh/2/02330410 TotalVideoPlaybackTimeMs 6000 ms [HW_hevc_4K_secure] 0
21qt/2/02330410 StreamAvgFramerate 10 fps [hevc] fps=15 1
k29r/2/02330410 videoResolution 2000 ms [HD.15] 0
k29r/2/02330410 videoResolution 2000 ms [FHD.15] 0
k29r/2/02330410 videoResolution 2000 ms [UHD.15] 0
csyv/2/02330410 FirstFrameReadyMs 30 ms [HW_hevc_4K_secure] 0
pb8a/2/02330410 FirstFrameRenderMs 40 ms [HW_hevc_4K_secure] 0
jn5x/2/02330410 AvgBitrate 80 kbps [HW_hevc_4K_secure] media=video 1
)");
    EXPECT_EQ(summary, PKG
              ".4K.secure.HW.omx.video.hevc:videoResolution.HD=2000:"
              "videoResolution.FHD=2000:videoResolution.UHD=2000:BRISK-P5Ms=40:"
              "BRISK-P2Ms=5:BRISK-P3Ms=15:FirstFrameReadyMs=30:"
              "StreamAvgBitrateInKbps=80");
}

// Bitrate: 252 inputs of 480 bytes in 5020 ms.
TEST_F(SessionTest, audioWithAtmos) {
    hostplatform::setAudioParameters("atmos_detected=1");
    start({"c2.vendor.raw", "audio/raw"});
    log.take();
    for (int i = 0; i <= 300; ++i) {
        input(i * 20000L, 480);
        output(i * 20000L);
        after(20);
    }
    const std::string summary = report();
    EXPECT_EQ(join(logged()), R"(I [BRISK] VND.c2.audio.raw Got First Input Frame 1040 pts:0
I updatePTSTime [VND.c2.audio.raw] First PTS after Flush or reset = 0
I [BRISK] VND.c2.audio.raw Got First Frame Ready 1040(0)
I 99999999.VND.c2.audio.raw.atmos.bitrateInKbps = 192
I 99999999.VND.c2.audio.raw.atmos.TotalAudioPlaybackTimeMs = 6000
I 99999999.VND.c2.audio.raw.atmos.StreamAvgBitrateInKbps = 192
)");
    EXPECT_EQ(join(sent()),
              R"(v8xh/2/02330410 TotalAudioPlaybackTimeMs 6000 ms [VND_raw.atmos] 0
20fc/2/02330410 AudioCodec 6000 ms [VND_raw.atmos] 0
jn5x/2/02330410 AvgBitrate 192 kbps [VND_raw.atmos] media=audio 1
)");
    EXPECT_EQ(summary, PKG
              ".VND.c2.audio.raw:TotalAudioPlaybackTimeMs=6000:"
              "StreamAvgBitrateInKbps=192");
}

TEST_F(SessionTest, anErrorEndsTheSession_andAReconfigurationStartsAnew) {
    startQuietly({}, 640, 480);
    logger->uploadDecoderError(0);
    EXPECT_EQ(join(logged()), R"(I 99999999.HW.c2.video.avc.DecoderErrorFatal = 1
I 99999999.HW.c2.video.avc.BRISK-P2Ms = 5
I 99999999.HW.c2.video.avc.BRISK-P3Ms = 15
I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 30
I 99999999.HW.c2.video.avc..DecoderErrorFatal = 1
)");
    EXPECT_EQ(report(), "");
    logger->uploadDecoderError(1);
    EXPECT_EQ(join(logged()), "I 99999999.HW.c2.video.avc.DecoderErrorTrans = 1\n");
    sent();

    // Neither the error after the report nor what was played since is left after a configuration.
    configure();
    play(60, 100000);
    vendor("CodecNonFatalErrorCount=2;");
    const int64_t configuredMs = clock.nowMs();
    configure();
    logger->profileMCStopBegin();
    after(500);
    logger->profileMCStopEnd();
    log.take();
    logger->uploadDecoderError(2);
    logger->uploadDecoderError(2);
    EXPECT_EQ(join(logged()),
              "I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1\n"
              "I 99999999.HW.c2.video.avc.BRISK-P2Ms = -" +
                      std::to_string(configuredMs) + R"(
I 99999999.HW.c2.video.avc.BRISK-P3Ms = 0
I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 0
I 99999999.HW.c2.video.avc..DecoderErrorFatal = 1
I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1
)");
    EXPECT_EQ(join(sent()), "68pc/2/03330470 .DecoderErrorFatal 1 errors [HW_avc] media=video 1\n");
}

// All that sessions can leave behind: rates, whole and half measured, repeats, drops in an open
// run, errors, a stop, a pending format change and a settling that lasts. Then the same story
// twice, by this logger and by a new one.
TEST_F(SessionTest, aReconfiguredLogger_isLikeANewOne) {
    const auto service = registerService();
    const auto story = [&] {
        configure();
        logger->profileP2End();
        std::string told = status() + logger->getFramerate().c_str() +
                           std::to_string(service->client()->getBufferCountSinceLastFlush());
        drop(2);
        input(0);
        output(0);
        output(0);
        logger->updateFrameDropCounters(0, true);
        after(501);
        output(1000000);
        changeFormat(1280, 720);
        output(5000000);
        render(5000000);
        for (int i = 0; i < 239; ++i) input(i * 20000);
        after(5001);
        input(240 * 20000);
        output(10000000);
        // As many as were rendered.
        vendor("HWCRenderFrameCount=2;");
        render(10000000);
        told += report();
        told += join(logged());
        told += join(sent());
        return std::regex_replace(told, std::regex("for [0-9]+, probably.*|Got zephra.*"), "");
    };
    settle({"c2.v", "video/avc", 0, true, true});
    secure = true;
    for (int i = 0; i < 245; ++i) input(i * 10000);
    after(6000);
    for (int i = 0; i < 13; ++i) input(33333 + i / 2);
    for (int i = 0; i < 15; ++i) output(33333);
    changeFormat(1920, 1080);
    drop(25);
    render(0);
    logger->profileP3End();
    logger->profileMCStopEnd();
    output(9000000);
    logger->uploadDecoderError(0);
    logger->uploadDecoderError(0);
    // The report was the end of a session; this is the rest.
    input(33333);
    after(100);
    changeFormat(1920, 1080);
    render(0);
    render(0);
    vendor("HWCRenderFrameCount=1;CodecNonFatalErrorCount=3");
    drop(4);
    output(60000000);
    output(60000001);
    after(501);
    secure = false;
    log.take();
    sent();

    const int64_t start = clock.nowMs();
    const std::string again = story();
    after(start - clock.nowMs());
    create();
    EXPECT_EQ(again, story());
}

TEST_F(SessionTest, ratesAndTimes_haveClasses) {
    const struct {
        float fps;
        int average;
        const char* stream;
    } kRates[] = {{17, 15, "24"},    {17.1f, 24, "24"}, {24.49f, 24, "24"}, {24.5f, 24, "25"},
                  {26, 24, "25"},    {26.1f, 30, "25"}, {27.5f, 30, "30"},  {32, 30, "30"},
                  {32.1f, 50, "30"}, {40, 50, "50"},    {52, 50, "50"},     {52.1f, 60, "50"},
                  {55, 60, "60"}};
    for (const auto& c : kRates) {
        SCOPED_TRACE(c.fps);
        EXPECT_EQ(logger->logFramerateToPulse(PKG, "avc", c.fps), c.average);
        // The sample whose spread gives this rate.
        configure();
        input(0);
        for (int i = 1; i < 240; ++i) input(static_cast<long>(239e6 / c.fps));
        EXPECT_STREQ(logger->getFramerate().c_str(), c.stream);
    }
    sent();
    EXPECT_EQ(logger->logFramerateToPulse(nullptr, "avc", 30), 0);
    EXPECT_EQ(logger->logFramerateToPulse(PKG, nullptr, 30), 0);
    for (const float fps : {-1.0f, NAN, 29.97f, INFINITY}) {
        logger->logFramerateToPulse(PKG, "avc", fps);
    }
    EXPECT_EQ(join(sent()), R"(21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=15 1
21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=60 1
21qt/2/02330410 StreamAvgFramerate 29 fps [avc] fps=30 1
21qt/2/02330410 StreamAvgFramerate 4294967295 fps [avc] fps=60 1
)");

    const struct {
        long ms;
        const char* text;
    } kTimes[] = {{-1, "0-5"},         {300000, "0-5"},     {300001, "5-30"}, {1800000, "5-30"},
                  {1800001, "30-120"}, {7200000, "30-120"}, {7200001, "120+"}};
    for (const auto& c : kTimes) EXPECT_STREQ(logger->getDurationRange(c.ms).c_str(), c.text);
}

TEST_F(SessionTest, keysAreCutAt149Characters) {
    const std::string format(140, 'f');
    configure({"c2.v", ("text/" + format).c_str()});
    log.take();
    logger->uploadDecoderError(0);
    // Of the package, the tag and the key, 149 characters; the pid then takes the package's place.
    const std::string key = (".VND.c2.unknown." + format).substr(0, 149 - strlen(PKG));
    EXPECT_EQ(join(logged()), "I 99999999" + key + " = 1\nI 99999999" + key + " = 1\n");
}

}  // namespace android::test
