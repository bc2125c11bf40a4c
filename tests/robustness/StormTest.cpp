// SPDX-License-Identifier: Apache-2.0
// Many codecs at once, each doing anything that a codec may do at any moment, while the logger
// service asks and dies. Meant for the sanitizers, and to run for as long as one likes:
//   MCL_STORM_SECONDS  how long, 3 by default
//   MCL_STORM_SEED     the seed of a run before, which each run prints; threads still interleave
//                      as they like, so it repeats what each thread does, not the whole

#include <limits>
#include <memory>

#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <shared_mutex>
#include <thread>

#include <gtest/gtest.h>

#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/LogCapture.h>
#include <tests/support/LoggerServices.h>
#include <tests/support/RecordingService.h>
#include <tests/support/ScopedProperties.h>

namespace android::test {
namespace {

using Random = std::mt19937_64;
using Clock = std::chrono::system_clock;

constexpr int kSlots = 12;
constexpr int kWorkers = 4;
constexpr int kQueriers = 2;

uint64_t setting(const char* name, uint64_t fallback) {
    const char* text = getenv(name);
    return text != nullptr ? strtoull(text, nullptr, 10) : fallback;
}

long openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/** A service that keeps the clients it is told of, those of codecs that are gone included. */
class StormService : public RecordingService {
  public:
    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override {
        std::lock_guard<std::mutex> guard(mTableLock);
        mClients[id] = client;
    }
    void unregisterClient(int64_t id) override {
        std::unique_lock<std::mutex> guard(mTableLock);
        const auto removed = mClients.extract(id);
        guard.unlock();  // it may be the last reference
    }
    sp<IMediaCodecLoggerClient> anyClient(Random& random) {
        std::lock_guard<std::mutex> guard(mTableLock);
        if (mClients.empty()) return nullptr;
        return std::next(mClients.begin(), random() % mClients.size())->second;
    }

  private:
    std::mutex mTableLock;
    std::map<int64_t, sp<IMediaCodecLoggerClient>> mClients;
};

/** One codec after the other. Its threads are those of a framework: one for each path. */
class Slot {
  public:
    explicit Slot(FakeClock& clock) : mClock(clock) {}

    void step(Random& random) {
        if (random() % 64 == 0) {
            std::unique_lock<std::shared_mutex> life(mLife);
            changeLife(random);
            return;
        }
        std::shared_lock<std::shared_mutex> life(mLife);
        if (mLogger == nullptr) return;
        const int path = static_cast<int>(random() % 3);
        std::lock_guard<std::mutex> onePath(mPaths[path]);
        const long pts = mPts + static_cast<long>(random() % 4) * 33333;
        path == 0 ? input(random, pts) : path == 1 ? output(random, pts) : render(random, pts);
    }

    /** How many of the codecs and loggers that there ever were still live. */
    int end() {
        std::unique_lock<std::shared_mutex> life(mLife);
        destroy();
        int living = 0;
        for (const auto& object : mMade) living += object.promote() != nullptr;
        return living;
    }

  private:
    void changeLife(Random& random) {
        if (mLogger == nullptr) create(random);
        const int change = static_cast<int>(random() % 5);
        if (change > 2) configure(random);
        if (change == 2) {
            mLogger->profileMCStopBegin();
            mLogger->profileMCStopEnd();
            mLogger->uploadDecoderError(static_cast<int>(random() % 3));
        }
        if (change == 1) mLogger->logMetrics();
        if (change == 0) destroy();
    }

    void create(Random& random) {
        mCodec = new FakeCodec;
        mKey = static_cast<long>(random() % kSlots);
        auto& analytics = ZephraMediaAnalytic::instance();
        EXPECT_EQ(OK, analytics.addCodec("storm", mCodec, mKey, mKey));
        analytics.updateCCodecConfigs(mCodec, random() % 4 != 0, false, random() % 8 != 0);
        mLogger = MediaCodecLogger::Create(-1, 1000);
        mMade.insert(mMade.end(), {wp<RefBase>(mCodec), wp<RefBase>(mLogger)});
        configure(random);
    }

    void configure(Random& random) {
        static constexpr const char* kMimes[] = {"video/avc", "video/hevc", "audio/raw",
                                                 "audio/mp4a-latm"};
        mLogger->configure("c2.mtk.dec", kMimes[random() % 4], random() % 4, random() % 8 != 0, 1,
                           1, mCodec, random() % 8 != 0);
        mLogger->profileP2End();
        mLogger->profileP3Start();
        mLogger->profileP3End();
    }

    void destroy() {
        mLogger = nullptr;
        // A query under way may still hold the logger; its end then removes the codec.
        mCodec = nullptr;
    }

    void input(Random& random, long pts) {
        auto& analytics = ZephraMediaAnalytic::instance();
        static const uint8_t kData[64] = {};
        mLogger->queueInputBuffer_pre(kData, random() % sizeof(kData), nullptr, nullptr, 0, nullptr,
                                      CryptoPlugin::kMode_Unencrypted, pts, mClock.nowUs(),
                                      random() % 2 != 0);
        mLogger->logInputBufferBitrate(random() % 1000, pts, false, random() % 2 != 0);
        analytics.updateOmxInput(mCodec, kData, 1, pts, 1, 0);
        mClock.advanceMs(static_cast<int64_t>(random() % 20));
        if (random() % 4 == 0) mPts += 33333;
    }

    void output(Random& random, long pts) {
        auto& analytics = ZephraMediaAnalytic::instance();
        switch (random() % 16) {
            case 0:
                mLogger->updateMetricsForFlush();
                return;
            case 1: {
                sp<AMessage> format = new AMessage;
                format->setInt32("width", static_cast<int32_t>(random() % 4000));
                format->setInt32("vendor.mtk-codec2.hdr-type", static_cast<int32_t>(random() % 7));
                mLogger->updateFormatChanged(format);
                return;
            }
            case 2:
                analytics.updateBuffers(mCodec, 1, random() % 8, 4, true, false, true);
                return;
            default:
                analytics.updateC2Output(mCodec, pts, 0);
                analytics.updateOmxOutput(mKey, pts, 0, 1);
                mLogger->updatePTSTime(pts, false, 1);
        }
    }

    void render(Random& random, long pts) {
        auto& analytics = ZephraMediaAnalytic::instance();
        const auto* buffer = reinterpret_cast<const GraphicBuffer*>((random() % 8 + 1) * 64);
        const long nowUs = mClock.nowUs();
        switch (random() % 8) {
            case 0: {
                AString metrics("MaxConsecutiveFramesDropped=3 HWCRenderFrameCount=7");
                mLogger->updateVendorMetrics(metrics);
                return;
            }
            case 1:
                mLogger->isInMitigateFrameDropAllowlist();
                mLogger->getStatus();
                return;
            case 2:
                mLogger->updateFrameDropCounters(pts, false);
                return;
            default:
                mLogger->updateFrameDropCounters(pts, true);
                mLogger->resetConsecutiveFrameDropFlag(nowUs * 1000, pts, random() % 2 != 0, 1);
                analytics.updateQueueBuffer(mCodec, nowUs, nowUs * 1000, pts, buffer);
                analytics.updateDequeueBuffer(mCodec, nowUs, buffer, 2);
        }
    }

    FakeClock& mClock;
    /** Held shared by events, and alone where the framework lets no event happen. */
    std::shared_mutex mLife;
    std::mutex mPaths[3];
    sp<MediaCodecLogger> mLogger;
    sp<FakeCodec> mCodec;
    std::vector<wp<RefBase>> mMade;
    long mKey = 0;
    std::atomic<long> mPts{0};
};

/** Asks a client everything, as if from another process. */
void ask(const sp<IMediaCodecLoggerClient>& local) {
    const sp<IMediaCodecLoggerClient> client =
            IMediaCodecLoggerClient::asInterface(new MortalRemote(IInterface::asBinder(local)));
    int a = 0, b = 0;
    client->getStatus();
    client->getPackageName();
    client->getClientResolution(a, b);
    client->getClientHDRType();
    client->getClientBitDepth();
    client->getClientScanType();
    client->getClientColorProperties(a);
    client->getTimeSinceLastFrameRendered();
    client->getUid();
    client->getBufferCountSinceLastFlush();
    client->isVideoClientUsingSecureMem();
    // Never torn by a reconfiguration.
    const std::set<std::string> formats = {"", "avc", "hevc", "raw", "mp4a"};
    EXPECT_EQ(1u, formats.count(client->getClientCodecFormat().string()));
}

/** The codecs that the registry still follows. */
bool registryIsEmpty() {
    // It takes 101; the room for that many more is all there is.
    auto& analytics = ZephraMediaAnalytic::instance();
    std::vector<sp<CodecBase>> fill;
    for (int i = 0; i < 101; ++i) fill.push_back(new FakeCodec);
    int added = 0;
    for (const auto& codec : fill) added += analytics.addCodec("fill", codec, 0, 0) == OK;
    for (const auto& codec : fill) analytics.removeCodec(codec);
    return added == 101;
}

TEST(StormTest, nothingIsLostOrLeftWhateverHappens) {
    const uint64_t seconds = setting("MCL_STORM_SECONDS", 3);
    const uint64_t seed = setting("MCL_STORM_SEED", std::random_device()());
    std::cout << "MCL_STORM_SEED=" << seed << '\n';

    const ScopedProperties properties(
            {{"mediaanalytic.enable", "true"}, {"mediaanalytic.debug", "0x7f"}});
    LogCapture log;
    FakeClock clock(1000);
    const sp<StormService> service = new StormService;
    OneServiceManager::instance().setService(service);
    const long descriptors = openDescriptors();

    std::vector<std::unique_ptr<Slot>> slots;
    for (int i = 0; i < kSlots; ++i) slots.push_back(std::make_unique<Slot>(clock));
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < kWorkers; ++i) {
        threads.emplace_back([&, random = Random(seed + i)]() mutable {
            while (!done) slots[random() % kSlots]->step(random);
        });
    }
    for (int i = 0; i < kQueriers; ++i) {
        threads.emplace_back([&, random = Random(seed + kWorkers + i)]() mutable {
            while (!done) {
                if (const auto client = service->anyClient(random)) ask(client);
            }
        });
    }
    uint64_t lines = 0;
    Random random(seed - 1);
    for (const auto end = Clock::now() + std::chrono::seconds(seconds); Clock::now() < end;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        // Now a healthy service, now one that will die soon, now none.
        const uint64_t kind = random() % 4;
        OneServiceManager::instance().setService(
                kind == 0 ? nullptr : new MortalRemote(service, random() % 1000));
        for (const LogLine& line : log.take()) {
            ++lines;
            EXPECT_TRUE(line.priority <= ANDROID_LOG_WARN || line.tag == "Parcel") << line;
        }
    }
    done = true;
    for (auto& thread : threads) thread.join();
    EXPECT_GT(lines, 0u);

    for (auto& slot : slots) EXPECT_EQ(0, slot->end());
    OneServiceManager::instance().setService(nullptr);
    EXPECT_EQ(descriptors, openDescriptors());
    EXPECT_TRUE(registryIsEmpty());
}

}  // namespace
}  // namespace android::test
