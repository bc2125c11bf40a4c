// SPDX-License-Identifier: Apache-2.0
// The service interface of the codecs on the wire: every request and reply, and failing peers.
#include <map>

#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <tests/binder/FakeServices.h>
#include <tests/support/LogCapture.h>

namespace android::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Form {
    using Service = IMediaCodecLoggerService;
    using Listener = media::IMediaCodecLoggerListener;
    using ListenerProxy = media::BpMediaCodecLoggerListener;
    using FakeListener = test::FakeListener;
};
using Call = ServiceCall<IMediaCodecLoggerService>;

// A call without a result.
#define CALL(expression)      \
    [](auto& service) {       \
        expression;           \
        return std::string(); \
    }

const std::vector<Call> kCalls = [] {
    std::vector<Call> calls{
            {1, 0, ID " " NULL_BINDER, "", "registerClient(client)", "",
             CALL(service.registerClient(kId, nullptr))},
            {1, 0, ID " " LOCAL_BINDER, "", "registerClient(client)", "",
             CALL(service.registerClient(kId, new FakeClient))},
            {2, 0, ID, "", "unregisterClient(client)", "", CALL(service.unregisterClient(kId))},
            {3, 0, "", "34120000 007f0000 " LOCAL_BINDER, "getActiveVideoClient(0)",
             "139637976732212 a.bc",
             [](auto& service) {
                 int64_t id = 5;
                 const auto client = service.getActiveVideoClient(id);
                 return std::to_string(id) + " " + client->getPackageName().string();
             }},
            // The flags are swapped on the wire. The texts travel without a length, so that the
            // stub takes their first letters for one.
            {4, 0, " 00000000 01000000 66697273 74000000 7365636f 6e640000", "",
             "updateHidlMediaMetrics(, , true, false)", "",
             CALL(service.updateHidlMediaMetrics("first", "second", true, false))},
            {4, 0, " 00000000 00000000 00000000 00000000", "",
             "updateHidlMediaMetrics(, , false, false)", "",
             CALL(service.updateHidlMediaMetrics(nullptr, nullptr, false, false))},
            {4, 0, " 01000000 00000000", "", "updateHidlMediaMetrics(null, null, false, true)", "",
             CALL(service.updateHidlMediaMetrics("first", "second", false, true))},
            {5, 1, ID, "", "onFirstFrameRendered(client)", "",
             CALL(service.onFirstFrameRendered(kId))},
            {6, 1, ID " e8030000 00000000", "", "onOutBufferAvailableAfterDelay(client, 1000)", "",
             CALL(service.onOutBufferAvailableAfterDelay(kId, 1000))},
            {15, 0, " 612e6263 00000000", "2f000000", "isInMitigateFrameDropAllowlist(a.bc)", "47",
             [](auto& service) {
                 return std::to_string(service.isInMitigateFrameDropAllowlist("a.bc"));
             }},
            {15, 0, " 00000000", "2f000000", "isInMitigateFrameDropAllowlist()", "47",
             [](auto& service) {
                 return std::to_string(service.isInMitigateFrameDropAllowlist(nullptr));
             }},
            {16, 0, "", "03000000 61616300", "getOldestAudioClientCodec()", "aac",
             [](auto& service) {
                 return std::string(service.getOldestAudioClientCodec().string());
             }},
    };
    // Those of observers: here none is one-way, and code 14 has no reply.
    for (Call call : serviceCalls<Form>()) {
        call.flags = 0;
        if (call.code == 14) call.reply = "";
        calls.push_back(call);
    }
    return calls;
}();

sp<IMediaCodecLoggerService> proxyOf(const sp<IBinder>& binder) {
    return new BpMediaCodecLoggerService(binder);
}

using Logs = std::map<uint32_t, std::vector<LogLine>>;  // by code

/** What the caller passed in as out-value, if anything. */
std::string unchanged(uint32_t code) {
    if (code == 8 || code == 14) return "";
    return code == 9 ? " { 5 }" : code == 13 ? " 0" : " 5";
}

LogLine warning(const char* text) {
    return {ANDROID_LOG_WARN, "IMediaCodecLoggerService", text};
}

LogLine info(const char* text) {
    return {ANDROID_LOG_INFO, "IMediaCodecLoggerService", text};
}

}  // namespace

TEST(ServiceProtocol, everyCall_hasTheseBytes) {
    const sp<FakeCodecService> service = new FakeCodecService;
    service->allowlisted = 47;
    service->oldestAudioCodec = "aac";
    const sp<Boundary> boundary = new Boundary(service);
    Logs logs{{4, {info("Transaction successfull")}},
              {9,
               {info("getActiveVideoClients start"),
                info("getActiveVideoClients returning the value 2")}}};
    LogCapture log;
    for (const Call& call : kCalls) {
        expectBytes(call, *proxyOf(boundary), *boundary, *service);
        std::vector<LogLine> lines = log.take();
        // The stub finds no texts where it looks for them.
        while (!lines.empty() && lines[0].tag == "Parcel") lines.erase(lines.begin());
        EXPECT_EQ(lines, logs[call.code]) << call.received;
    }
}

// Unlike the generator's stubs this one sends the out-value with every status.
TEST(ServiceProtocol, exception_isFollowedByTheOutValueAllTheSame) {
    const sp<FakeCodecService> service = new FakeCodecService;
    service->status =
            binder::Status::fromExceptionCode(binder::Status::EX_ILLEGAL_STATE, String8("no"));
    const sp<Boundary> boundary = new Boundary(service);
    for (const Call& call : kCalls) {
        if (call.code < 7 || call.code == 8 || call.code > 13) continue;
        EXPECT_EQ(call.call(*proxyOf(boundary)), "-5 no" + unchanged(call.code)) << call.received;
        // In place of the table's status, which is OK.
        EXPECT_EQ(boundary->last().reply, "fbffffff 02000000 6e006f00 00000000 00000000" +
                                                  std::string(call.reply).substr(8));
    }
}

TEST(ServiceProtocol, deadService_isLoggedAndLeavesOutValuesAlone) {
    Logs logs{
            {1, {warning("registerClient fail id:139637976732212")}},
            {2, {warning("unregisterClient fail id:139637976732212")}},
            {7, {warning("registerListener Transaction failed")}},
            {8, {warning("unregisterListener Transaction failed")}},
            {9,
             {info("getActiveVideoClients start"), info("getActiveVideoClients returning empty")}},
            {14, {warning("setMitigateFrameDropAllowlist Transaction failed")}},
            {15, {warning("isInMitigateFrameDropAllowlist failed!")}},
            {16,
             {warning("getOldestAudioClientCodec Transaction failed"),
              {ANDROID_LOG_ERROR, "Parcel", "Reading a NULL string not supported here."}}},
    };
    const sp<IMediaCodecLoggerService> service = proxyOf(new CannedPeer(DEAD_OBJECT));
    LogCapture log;
    for (const Call& call : kCalls) {
        if (call.code == 3) continue;
        const bool hasStatus = call.code >= 7 && call.code <= 14;
        const std::string result = call.code == 15 ? "0" : "";
        EXPECT_EQ(call.call(*service), hasStatus ? "failed -32" + unchanged(call.code) : result)
                << call.received;
        EXPECT_EQ(log.take(), logs[call.code]) << call.received;
    }
    int64_t id = 5;
    EXPECT_EQ(service->getActiveVideoClient(id), nullptr);
    EXPECT_EQ(id, 5);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(ServiceProtocol, damagedReply_neverReachesTheCaller) {
    const struct {
        uint32_t code;
        const char* reply;
        const char* result;
    } kDamages[] = {
            {7, "", "failed -61 5"},
            {7, EX_NULL_POINTER_REPLY " 2b000000 00000000", "-4  5"},
            {9, "", "failed -61 { 5 }"},
            {9, "00000000 ffffffff", "ok { 5 }"},
            {9, "00000000 ffff0f00 01000000 00000000", "ok { 5 }"},  // a million ids announced
            {12, "00000000 2e000000", "ok 5"},
            {16, "40000000 61000000", ""},
    };
    LogCapture log;
    for (const auto& [code, reply, result] : kDamages) {
        for (const Call& call : kCalls) {
            if (call.code != code) continue;
            EXPECT_EQ(call.call(*proxyOf(new CannedPeer(OK, reply))), result) << reply;
        }
    }
    // Logged with the caller's own ids although the service answered with an exception.
    std::vector<int64_t> ids{1, 2, 3};
    log.take();
    proxyOf(new CannedPeer(OK, EX_NULL_POINTER_REPLY))->getActiveVideoClients(&ids);
    EXPECT_EQ(log.take().back(), info("getActiveVideoClients returning the value 3"));
}

TEST(ServiceProtocol, requestsThatAreTooShort_arriveAsZerosAndEmptyTexts) {
    const sp<FakeCodecService> service = new FakeCodecService;
    const struct {
        uint32_t code;
        const char* arguments;
        const char* received;
    } kRequests[] = {
            {1, "", "registerClient(client)"},
            {4, " 05000000", "updateHidlMediaMetrics(null, null, false, true)"},
            {4, " 00000000 00000000 01000000 61000000 01000000 62000000",
             "updateHidlMediaMetrics(a, b, false, false)"},
            {6, ID, "onOutBufferAvailableAfterDelay(other, 0)"},
            {14, " 01000000 61000000", "setMitigateFrameDropAllowlist(a, , )"},
            {14, " ffffffff ffff0f00 00000000 00000000", "setMitigateFrameDropAllowlist(null, , )"},
            {15, " 61626364", "isInMitigateFrameDropAllowlist()"},
    };
    for (const auto& [code, arguments, received] : kRequests) {
        EXPECT_EQ(sendRaw(service, code, std::string(SERVICE_TOKEN) + arguments).result, NO_ERROR);
        EXPECT_THAT(service->takeCalls(), ElementsAre(received)) << code << arguments;
    }
    EXPECT_EQ(service->client(), nullptr);
}

TEST(ServiceProtocol, foreignTokensAndCodes_reachNoMethod) {
    const sp<FakeCodecService> service = new FakeCodecService;
    for (uint32_t code = 1; code <= 16; ++code) {
        const Transaction sent = sendRaw(service, code, CLIENT_TOKEN ID);
        EXPECT_EQ(sent.result, PERMISSION_DENIED) << code;
        EXPECT_EQ(sent.reply, "");
    }
    for (const uint32_t code : {0u, 17u}) {
        EXPECT_EQ(sendRaw(service, code, SERVICE_TOKEN ID).result, UNKNOWN_TRANSACTION) << code;
    }
    EXPECT_THAT(service->takeCalls(), IsEmpty());
}

}  // namespace android::test
