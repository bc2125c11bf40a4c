// SPDX-License-Identifier: Apache-2.0
// Sequences of operations on one logger with a clock that jumps and a logger service that comes,
// dies and stays away, against a model of the counters. What the service asks of the codec and what
// the report says must agree with the model.
#include "Fuzz.h"

#include <limits>
#include <memory>

#include <hostplatform/Audio.h>
#include <hostplatform/Display.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <tests/support/LoggerServices.h>
#include <tests/support/MetricsCapture.h>
#include <tests/support/RecordingService.h>
#include <tests/support/ScopedProperties.h>

#include "LoggerModel.h"

using namespace android;

namespace {

constexpr const char* kCodecNames[] = {"c2.vendor.avc", "OMX.google.aac", "c2.mtk.hevc", "%n%s%d",
                                       "c2.android.raw"};
constexpr const char* kMimes[] = {"video/avc",    "audio/mp4a-latm", "audio/raw",
                                  "%s%n/video%d", "text/vtt",        "video/audio"};

bool contains(const std::string& text, const char* word) {
    return text.find(word) != std::string::npos;
}

class Session {
  public:
    Session(const uint8_t* data, size_t size) : mIn(data, size) {
        const uint8_t settings = mIn.byte();
        hostplatform::setDisplaySize((settings & 1) != 0 ? 3840 : 1280, 720);
        hostplatform::setDisplayConnected((settings & 2) == 0);
        if ((settings & 4) != 0) {
            mProperties.set("mediaanalytic.enable", "true");
            mProperties.set("mediaanalytic.debug", "0xf047f");
            ZephraMediaAnalytic::instance().addCodec("name", mCodec, 1, 2);
            ZephraMediaAnalytic::instance().updateCCodecConfigs(mCodec, true, false, true);
        }
        hostplatform::setAudioParameters((settings & 8) != 0 ? "atmos_detected=1" : "%s;=;");
        test::OneServiceManager::instance().setService((settings & 16) != 0 ? nullptr : mRemote);
        mLogger->configure("c2.vendor", "video/avc", 0, true, 0, 0, nullptr, true);
        mLogger->profileP2End();
        mClient = mService->client();
    }

    void run() {
        configure();
        while (!mIn.atEnd()) {
            const uint8_t operation = mIn.byte();
            if (operation % 32 < 16) {
                playback(operation % 16);
            } else {
                control(operation % 16);
            }
            FUZZ_CHECK(heldLocks() == 0);
            check();
        }
        const wp<MediaCodecLogger> gone(mLogger);
        mLogger = nullptr;
        FUZZ_CHECK(gone.promote() == nullptr, "something keeps the logger\n");
        FUZZ_CHECK(mCodec->getStrongCount() == 1, "something keeps the codec\n");
        for (const auto& line : mLog.take()) {
            FUZZ_CHECK(line.tag == "MediaCodecLogger" || line.tag == "ZMediaAnalyticV" ||
                               line.tag == "IMediaCodecLoggerService" || line.tag == "Parcel",
                       "%s: %s\n", line.tag.c_str(), line.text.c_str());
        }
    }

  private:
    void configure() {
        const uint8_t names = mIn.byte();
        const uint8_t flags = mIn.byte();
        const std::string codecName = kCodecNames[names % std::size(kCodecNames)];
        const std::string mime = kMimes[names / 8 % std::size(kMimes)];
        const bool video = contains(mime, "video");
        const bool decoder = (flags & 4) == 0, logged = (flags & 8) == 0;
        mLogger->configure(codecName.c_str(), mime.c_str(), flags & 3, decoder, 1, flags & 16,
                           mCodec, logged);
        // The tag also holds the format's name, which counts as well.
        mModel.configure(video, contains(mime, "audio"), (flags & 1) != 0, decoder, logged);
        ask();
    }

    int64_t pts() {
        const int8_t small = static_cast<int8_t>(mIn.byte());
        if (small == -128) return mIn.number<int64_t>() / 4;
        return small == -127 ? 5000001 + mPts : mPts = small * 33333;
    }

    void advance() {
        // About the limits that something depends on.
        static constexpr uint16_t kSteps[] = {1, 33, 299, 300, 500, 501, 999, 1000, 5000, 5001};
        const uint8_t step = mIn.byte();
        mClock.advanceMs(step < std::size(kSteps) ? kSteps[step] : mIn.number<uint16_t>());
    }

    void playback(int operation) {
        const int64_t now = mClock.nowMs();
        switch (operation) {
            case 0:
            case 1:
                input(now);
                break;
            case 2:
            case 3:
            case 4: {
                const int64_t ts = pts();
                const uint8_t count = operation == 4 ? mIn.byte() : 1;
                mLogger->updatePTSTime(ts, count == 9, count);
                mModel.output(now, ts, count == 9, count);
                break;
            }
            case 5:
            case 6:
                mLogger->updateFrameDropCounters(mPts, true);
                mModel.release(now, true);
                break;
            case 7:
                for (int drops = mIn.byte() % 32; drops >= 0; --drops) {
                    mLogger->updateFrameDropCounters(mPts, false);
                    mModel.release(now, false);
                }
                break;
            case 8:
            case 9: {
                const bool tunnel = operation == 9;
                const int64_t ts = pts();
                mLogger->resetConsecutiveFrameDropFlag(tunnel ? -1 : now * 1000000, ts, tunnel, 2);
                mModel.render(now, tunnel, ts, 2);
                break;
            }
            case 10:
                mLogger->updateMetricsForFlush();
                mModel.flush(now);
                break;
            case 11:
                advance();
                break;
            case 12:
                changeFormat();
                break;
            case 13:
            case 14:
                vendor(operation == 13);
                break;
            case 15:
                mLogger->checkRepeatedInputPTS(pts());
                mLogger->logRepeatPTS(mIn.byte(), mPts);
                break;
        }
    }

    void input(int64_t now) {
        const uint8_t size = mIn.byte();
        mLogger->queueInputBuffer_pre(nullptr, 0, nullptr, nullptr, 0, nullptr,
                                      CryptoPlugin::kMode_Unencrypted, mPts, now * 1000, false);
        mLogger->logInputBufferBitrate(size, pts(), size & 1, size & 2);
        mModel.input(now, size == 0);
    }

    void changeFormat() {
        sp<AMessage> format = new AMessage;
        format->setInt32("width", mIn.number<uint16_t>());
        format->setInt32("vendor.mtk-codec2.hdr-type", mIn.byte());
        mLogger->updateFormatChanged(format);
        mModel.formatChanged();
    }

    void vendor(bool ofTunnel) {
        const uint8_t value = mIn.byte();
        AString metrics(ofTunnel ? "TunnelFrameDropCount " : "HWCRenderFrameCount ");
        metrics.append(int{value});
        metrics.append(" ");
        mLogger->updateVendorMetrics(metrics);
        if (mModel.tunneled == ofTunnel) mModel.vendor(value);
    }

    void control(int operation) {
        switch (operation) {
            case 0:
                configure();
                break;
            case 1:
            case 2:
                report(operation == 2);
                break;
            case 3:
                mLogger->resetMetricsData();
                mModel.reset();
                break;
            case 4:
                mLogger->profileP2End();
                break;
            case 5:
                mLogger->profileP3Start();
                mLogger->profileP3End();
                mLogger->profileMCStopBegin();
                mLogger->profileMCStopEnd();
                break;
            case 6:
                mService->oldestAudioCodec = "%s%n";
                mRemote->setLifetime(mIn.byte());
                break;
            case 7:
                test::OneServiceManager::instance().setService(mIn.flag() ? nullptr : mRemote);
                break;
            case 8:
                mLogger->isInMitigateFrameDropAllowlist();
                break;
            case 9:
                mLogger->notifyFirstFrameRendered();
                mLogger->notifyOutBufferAvailablAfterDelay(mIn.number<int64_t>());
                break;
            case 10:
                mLogger->logFramerateToPulse("com.%s", "%n", mIn.number<float>());
                break;
            case 11:
                mLogger->logToBuffers(std::string(mIn.text()).c_str(), mIn.number<uint64_t>());
                break;
            case 12:
                mLogger->getDurationRange(mIn.number<int64_t>());
                mLogger->getFramerate();
                mLogger->getFramedropMeta();
                break;
            default:
                break;
        }
    }

    void report(bool byError) {
        // A run that is open is no part of the report.
        const fuzz::LoggerModel before = mModel;
        mMetrics.take();
        if (byError) {
            mLogger->uploadDecoderError(mIn.byte());
        } else {
            const bool due = mModel.logged && !mModel.reported;
            FUZZ_CHECK(mLogger->logMetrics().empty() == !due);
        }
        if (!mModel.logged || mModel.reported) return;
        for (const auto& record : mMetrics.take()) compare(record, before);
        mModel.reported = true;
        mModel.reset();
    }

    void compare(const hostplatform::MetricsRecord& record, const fuzz::LoggerModel& model) {
        if (record.name == "TotalFramesDropped" || record.name == "TotalFrameDrops") {
            FUZZ_CHECK(record.value == model.dropped, "%f\n", record.value);
        } else if (record.name == "FramedropType") {
            static constexpr const char* kSizes[] = {"10", "5", "2", "1", "max"};
            const std::string& size = record.data.at(0).second;
            const uint32_t expected[] = {model.pieces[0], model.pieces[1], model.pieces[2],
                                         model.pieces[3], model.longest};
            for (size_t i = 0; i < std::size(kSizes); ++i) {
                if (size == kSizes[i]) FUZZ_CHECK(record.value == expected[i]);
            }
        } else if (record.name == "FramedropSource") {
            const bool display = record.data.at(0).second == "SFAndHWCDrops";
            FUZZ_CHECK(record.value ==
                       (display ? model.byDisplay : model.dropped - model.byDisplay));
        }
    }

    /** What the service would hear now. */
    void check() {
        if (mClient != nullptr) {
            const int64_t frames = mClient->getBufferCountSinceLastFlush();
            FUZZ_CHECK(static_cast<uint64_t>(frames) == mModel.frames);
        }
        const std::string status = mLogger->getStatus().c_str();
        const size_t at = status.find("FramesDropped: ");
        FUZZ_CHECK((at != std::string::npos) == mModel.video);
        if (!mModel.video) return;
        FUZZ_CHECK(static_cast<uint32_t>(atol(status.c_str() + at + 15)) == mModel.dropped);
    }

    void ask() {
        if (mClient == nullptr) return;
        int width = 0, height = 0;
        mClient->getStatus();
        mClient->getClientResolution(width, height);
        mClient->getClientHDRType();
        mClient->getClientScanType();
        mClient->getClientCodecFormat();
        mClient->getTimeSinceLastFrameRendered();
        mClient->isVideoClientUsingSecureMem();
    }

    fuzz::Bytes mIn;
    test::ScopedProperties mProperties;
    test::FakeClock mClock{1000};
    test::LogCapture mLog;
    test::MetricsCapture mMetrics;
    sp<test::FakeCodec> mCodec = new test::FakeCodec;
    sp<test::RecordingService> mService = new test::RecordingService;
    sp<test::MortalRemote> mRemote = new test::MortalRemote(mService);
    sp<MediaCodecLogger> mLogger = MediaCodecLogger::Create(99999999, 1000);
    /** Null where there is no service at all. */
    sp<IMediaCodecLoggerClient> mClient;
    fuzz::LoggerModel mModel;
    int64_t mPts = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 4096) return 0;
    Session(data, size).run();
    return 0;
}
