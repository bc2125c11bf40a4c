// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <thread>

#include "LoggerTest.h"

namespace android::test {

// Input, output and render threads of one codec while binder threads ask it everything, through
// reconfigurations and the end of the logger itself. Meant for the thread sanitizer.
TEST_F(LoggerTest, queries_runWhileTheCodecWorks) {
    const auto service = registerService();
    configure();
    logger->profileP2End();
    const sp<IMediaCodecLoggerClient> client = service->client();

    std::atomic<bool> done{false};
    std::vector<std::thread> binderThreads;
    for (int i = 0; i < 2; ++i) {
        binderThreads.emplace_back([&] {
            const std::vector<std::string> formats = {"", "avc", "hevc"};
            while (!done) {
                int a = 0, b = 0;
                client->getStatus();
                client->getClientResolution(a, b);
                client->getClientHDRType();
                client->getClientScanType();
                client->getClientBitDepth();
                client->getClientColorProperties(a);
                client->getTimeSinceLastFrameRendered();
                client->getBufferCountSinceLastFlush();
                client->isVideoClientUsingSecureMem();
                client->getUid();
                // Never torn.
                EXPECT_THAT(formats, testing::Contains(client->getClientCodecFormat().string()));
            }
        });
    }
    for (int round = 0; round < 6; ++round) {
        configure({"c2.vendor.dec", round % 2 != 0 ? "video/hevc" : "video/avc"});
        std::thread inputs([&] {
            for (long i = 0; i < 300; ++i) input(i * 33333);
        });
        std::thread outputs([&] {
            for (long i = 0; i < 300; ++i) {
                if (i % 50 == 0) {
                    sp<AMessage> format = new AMessage;
                    format->setInt32("width", 1280 + i);
                    format->setInt32("vendor.mtk-codec2.hdr-type", i / 50);
                    format->setInt32("vendor.mtk-codec2.scan-type", i / 50);
                    logger->updateFormatChanged(format);
                }
                output(i * 33333);
                clock.advanceMs(33);
            }
        });
        std::thread renders([&] {
            for (long i = 0; i < 300; ++i) {
                if (i % 7 == 0) drop();
                render(i * 33333);
            }
        });
        inputs.join();
        outputs.join();
        renders.join();
        report();
    }
    // The last strong reference may go on a binder thread.
    logger = nullptr;
    done = true;
    for (auto& thread : binderThreads) thread.join();
    EXPECT_EQ(client->getUid(), -1);
}

}  // namespace android::test
