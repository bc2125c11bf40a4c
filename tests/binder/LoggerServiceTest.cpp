// SPDX-License-Identifier: Apache-2.0
// What the reference service does with each call; clients and listeners are of this process.
#include <limits>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/binder/FakeServices.h>
#include <tools/codecloggerd/LoggerService.h>

namespace android::test {

namespace {

using codecloggerd::LoggerService;
using testing::ElementsAre;

class CodecLoggerService : public testing::Test {
  protected:
    void addVideo(int64_t id) { service->registerClient(id, new FullClient); }
    void addAudio(int64_t id, const char* format) {
        service->registerClient(id, new FullClient(format, false));
    }
    std::vector<int64_t> activeVideoClients() {
        std::vector<int64_t> ids;
        EXPECT_TRUE(service->getActiveVideoClients(&ids).isOk());
        return ids;
    }

    const sp<LoggerService> service = new LoggerService;
};

}  // namespace

TEST_F(CodecLoggerService, activeVideoClient_isTheOneWithTheLatestSignOfLife) {
    int64_t id = 5;
    EXPECT_EQ(service->getActiveVideoClient(id), nullptr);
    EXPECT_EQ(id, 5);
    addVideo(1);
    addAudio(2, "aac");
    addVideo(3);
    EXPECT_THAT(activeVideoClients(), ElementsAre(3, 1));
    service->onFirstFrameRendered(1);
    EXPECT_THAT(activeVideoClients(), ElementsAre(1, 3));
    service->onFirstFrameRendered(2);  // audio
    service->onOutBufferAvailableAfterDelay(3, 1500);
    EXPECT_THAT(activeVideoClients(), ElementsAre(3, 1));
    const sp<IMediaCodecLoggerClient> active = service->getActiveVideoClient(id);
    EXPECT_EQ(id, 3);
    EXPECT_STREQ(active->getClientCodecFormat(), "hevc");
    service->unregisterClient(3);
    service->unregisterClient(77);
    EXPECT_THAT(activeVideoClients(), ElementsAre(1));
    addVideo(1);  // again, as after a reconfiguration
    EXPECT_THAT(activeVideoClients(), ElementsAre(1));
    service->registerClient(4, nullptr);
    EXPECT_THAT(activeVideoClients(), ElementsAre(1));
}

TEST_F(CodecLoggerService, queries_areAnsweredByTheClientOrRefused) {
    addVideo(1);
    int64_t count = 0;
    int32_t uid = 0;
    EXPECT_TRUE(service->getBufferCountSinceLastFlush(1, &count).isOk());
    EXPECT_TRUE(service->getUid(1, &uid).isOk());
    EXPECT_EQ(count, -1);
    EXPECT_EQ(uid, 10057);
    EXPECT_EQ(textOf(service->getUid(2, &uid)), "-3 no client has id 2");
    addAudio(3, "ac3");
    addAudio(4, "mp4a");
    EXPECT_STREQ(service->getOldestAudioClientCodec(), "ac3");
}

TEST(ClientTable, sameIdInTwoProcesses_isToldApartByTheCaller) {
    codecloggerd::ClientTable table;
    for (const int32_t pid : {10, 20}) {
        codeclogger::ClientEntry entry{};
        entry.hostPid = pid;
        entry.id = 0x7f00;
        table.add(entry);
    }
    EXPECT_EQ(table.find(10, 0x7f00)->handle, 1);
    EXPECT_EQ(table.find(20, 0x7f00)->handle, 2);
    EXPECT_EQ(table.find(0, 0x7f00)->handle, 2) << "a device's one-way call: the newest";
    EXPECT_EQ(table.find(10, 0x7f01), nullptr);
    EXPECT_FALSE(table.remove(30, 0x7f00));
    EXPECT_EQ(table.remove(20, 0x7f00)->handle, 2);
    EXPECT_EQ(table.find(30, 0x7f00)->handle, 1);
}

}  // namespace android::test
