// SPDX-License-Identifier: Apache-2.0
// IMediaCodecLoggerClient on the wire: every request and reply, failing peers, defaults.
#include <functional>

#include <tests/binder/FakeServices.h>
#include <tests/support/LogCapture.h>

namespace android::test {

namespace {

using Client = IMediaCodecLoggerClient;

struct Call {
    uint32_t code;
    const char* reply;  // of a FullClient
    const char* full;   // what a proxy of a FullClient reads from it
    const char* plain;  // what a proxy of a FakeClient reads
    const char* dead;   // what a proxy reads whose peer is dead
    std::function<std::string(Client&)> call;
};

template <String8 (Client::*method)()>
std::string text(Client& client) {
    return (client.*method)().string();
}

template <auto method>
std::string number(Client& client) {
    return std::to_string((client.*method)());
}

const Call kCalls[] = {
        {1, "09000000 0948573a 20594553 0a000000", "\tHW: YES\n", "\tHW: YES\n", "",
         text<&Client::getStatus>},
        {2, "04000000 612e6263 00000000", "a.bc", "a.bc", "", text<&Client::getPackageName>},
        {3, "01000000", "1", "1", "0", number<&Client::isVideoClient>},
        {4, "67120000", "4711", "4711", "0", number<&Client::getPid>},
        {6, "80070000 38040000", "1920x1080", "0x0", "7x8",
         [](Client& client) {
             int width = 7, height = 8;
             client.getClientResolution(width, height);
             return std::to_string(width) + "x" + std::to_string(height);
         }},
        {7, "06000000 48445231 302b0000", "HDR10+", "", "", text<&Client::getClientHDRType>},
        {8, "0a000000", "10", "0", "0", number<&Client::getClientBitDepth>},
        {9, "01000000 70000000", "p", "", "", text<&Client::getClientScanType>},
        {10, "feffffff", "-2", "0", "9",
         [](Client& client) {
             int value = 9;
             client.getClientColorProperties(value);
             return std::to_string(value);
         }},
        {11, "08070605 04030201", "72623859790382856", "0", "0",
         number<&Client::getTimeSinceLastFrameRendered>},
        {12, "49270000", "10057", "-1", "0", number<&Client::getUid>},
        {13, "ffffffff ffffffff", "-1", "0", "0", number<&Client::getBufferCountSinceLastFlush>},
        {14, "01000000", "1", "0", "0", number<&Client::isVideoClientUsingSecureMem>},
        {15, "04000000 68657663 00000000", "hevc", "other", "",
         text<&Client::getClientCodecFormat>},
};

sp<Client> proxyOf(const sp<IBinder>& binder) {
    return new BpMediaCodecLoggerClient(binder);
}

}  // namespace

TEST(ClientProtocol, everyCall_hasTheseBytes) {
    const sp<Boundary> boundary = new Boundary(new FullClient);
    const sp<Boundary> plain = new Boundary(new FakeClient);
    for (const Call& call : kCalls) {
        SCOPED_TRACE(call.code);
        EXPECT_EQ(call.call(*proxyOf(boundary)), call.full);
        EXPECT_EQ(boundary->last().code, call.code);
        EXPECT_EQ(boundary->last().flags, 0u);
        EXPECT_EQ(boundary->last().request, CLIENT_TOKEN);
        EXPECT_EQ(boundary->last().reply, call.reply);
        EXPECT_EQ(call.call(*proxyOf(plain)), call.plain);
    }
}

TEST(ClientProtocol, deadClient_yieldsFallbacksInSilence) {
    LogCapture log;
    // The bytes that a failing peer leaves behind are not a reply.
    for (const char* leftover : {"", "01000000 61000000"}) {
        const sp<CannedPeer> dead = new CannedPeer(DEAD_OBJECT, leftover);
        for (const Call& call : kCalls) {
            EXPECT_EQ(call.call(*proxyOf(dead)), call.dead) << call.code;
        }
    }
    EXPECT_THAT(log.take(), testing::IsEmpty());
}

TEST(ClientProtocol, foreignTokensAndCodes_areRefused) {
    const sp<FullClient> client = new FullClient;
    for (const uint32_t code : {0u, 5u, 16u}) {
        EXPECT_EQ(sendRaw(client, code, CLIENT_TOKEN).result, UNKNOWN_TRANSACTION) << code;
    }
    for (const Call& call : kCalls) {
        for (const char* request : {SERVICE_TOKEN, "", "00000080 ffffffff 54535953"}) {
            const Transaction sent = sendRaw(client, call.code, request);
            EXPECT_EQ(sent.result, PERMISSION_DENIED) << call.code << " " << request;
            EXPECT_EQ(sent.reply, "");
        }
    }
}

}  // namespace android::test
