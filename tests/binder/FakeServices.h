// SPDX-License-Identifier: Apache-2.0
// What the tests of the wire share: the calls that every form of the service interface has, with
// their bytes, and both ends of them. Bytes are hexadecimal words of four in memory order.
#pragma once

#include <limits>
#include <memory>

#include <stdio.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <binder/Parcel.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/LoggerServices.h>
#include <tests/support/RecordingService.h>

namespace android::test {

inline std::string hexOf(const Parcel& parcel) {
    std::string hex;
    for (size_t i = 0; i < parcel.dataSize(); i++) {
        char digits[3];
        snprintf(digits, sizeof(digits), "%02x", parcel.data()[i]);
        if (i > 0 && i % 4 == 0) hex += ' ';
        hex += digits;
    }
    return hex;
}

inline void setHex(Parcel* parcel, const std::string& hex) {
    std::vector<uint8_t> bytes;
    uint8_t byte;
    int used;
    for (const char* c = hex.c_str(); sscanf(c, " %2hhx%n", &byte, &used) == 1; c += used) {
        bytes.push_back(byte);
    }
    parcel->setData(bytes.data(), bytes.size());
    parcel->setDataPosition(0);
}

// How every request starts, by interface: strict-mode word, work source, 'SYST', descriptor.
#define TOKEN(length)                                                                           \
    "00000080 ffffffff 54535953 " length                                                        \
    " 61006e00 64007200 6f006900 64002e00 6d006500 "                                            \
    "64006900 61002e00 49004d00 65006400 69006100 43006f00 64006500 63004c00 6f006700 67006500" \
    " 7200"
#define CLIENT_TOKEN TOKEN("25000000") "4300 6c006900 65006e00 74000000"
#define SERVICE_TOKEN TOKEN("26000000") "5300 65007200 76006900 63006500 00000000"
#define LISTENER_TOKEN TOKEN("27000000") "4c00 69007300 74006500 6e006500 72000000"

/** A binder object of this process: any two addresses, and the system's stability; a pattern. */
#define LOCAL_BINDER "852a6273 13010000 ........ ........ ........ ........ 0c000000"
#define NULL_BINDER "852a6273 13010000 00000000 00000000 00000000 00000000 00000000"
#define EX_NULL_POINTER_REPLY "fcffffff 00000000 00000000 00000000"

/** One call as it was on the wire. */
struct Transaction {
    uint32_t code;
    uint32_t flags;
    std::string request;
    status_t result;
    std::string reply;
};

/** A peer in another process, as it were; keeps the last transaction. */
class Boundary : public MortalRemote {
  public:
    using MortalRemote::MortalRemote;
    const Transaction& last() const { return mLast; }

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        mLast = {code, flags, hexOf(data), MortalRemote::onTransact(code, data, reply, flags), ""};
        mLast.reply = hexOf(*reply);
        return mLast.result;
    }

  private:
    Transaction mLast{};
};

/** A peer that gives every call the same answer. */
class CannedPeer : public BBinder {
  public:
    CannedPeer(status_t result, const std::string& reply = "") : mResult(result), mReply(reply) {}

  protected:
    status_t onTransact(uint32_t, const Parcel&, Parcel* reply, uint32_t) override {
        Parcel answer;
        setHex(&answer, mReply);
        reply->appendFrom(&answer, 0, answer.dataSize());
        return mResult;
    }

  private:
    const status_t mResult;
    const std::string mReply;
};

/** Sends bytes to a stub, as any peer can. A reply that the call failed with does not travel. */
inline Transaction sendRaw(const sp<IBinder>& stub, uint32_t code, const std::string& request) {
    Parcel data;
    Parcel reply;
    setHex(&data, request);
    const status_t result = stub->transact(code, data, &reply);
    return {code, 0, request, result, hexOf(reply)};
}

/** "ok", "-4 no listener" of an exception, or "failed -32" where the call did not get through. */
inline std::string textOf(const binder::Status& status) {
    if (status.isOk()) return "ok";
    if (status.exceptionCode() == binder::Status::EX_TRANSACTION_FAILED) {
        return "failed " + std::to_string(status.transactionError());
    }
    return std::to_string(status.exceptionCode()) + " " + status.exceptionMessage().string();
}

/** Keeps the calls, as texts. It may be a default implementation, whose owner deletes it. */
template <typename Recording>
class Keeping : public Recording {
  public:
    Keeping() { this->extendObjectLifetime(RefBase::OBJECT_LIFETIME_WEAK); }
    std::vector<std::string> takeCalls() { return std::exchange(mCalls, {}); }

  private:
    void onCall(const std::string& call) override { mCalls.push_back(call); }

    std::vector<std::string> mCalls;
};
template <typename Stub, typename Listener>
using FakeObserverService = Keeping<RecordingObserverService<Stub, Listener>>;
using FakeCodecService = Keeping<RecordingService>;

template <typename Stub>
class RecordingListener : public Recording<Stub> {
    binder::Status notifyFirstFrameRendered(int64_t clientId) override {
        this->received("notifyFirstFrameRendered", clientId);
        return this->status;
    }
    binder::Status notifyOutBufferAvailableAfterDelay(int64_t clientId, int64_t delayMs) override {
        this->received("notifyOutBufferAvailableAfterDelay", clientId, delayMs);
        return this->status;
    }
    binder::Status notifyVideoClientUnregistered(int32_t value) override {
        this->received("notifyVideoClientUnregistered", value);
        return this->status;
    }
};
template <typename Stub>
using FakeListenerOf = Keeping<RecordingListener<Stub>>;
using FakeListener = FakeListenerOf<media::BnMediaCodecLoggerListener>;

/** A client that overrides only what it must, and leaves as it is what it could fill. */
class FakeClient : public BnMediaCodecLoggerClient {
  public:
    String8 getStatus() override { return String8("\tHW: YES\n"); }
    String8 getPackageName() override { return String8("a.bc"); }
    bool isVideoClient() override { return true; }
    int32_t getPid() override { return 4711; }
    void initialize(int, bool, String8) override {}
    void getClientResolution(int&, int&) override {}
    void getClientColorProperties(int&) override {}
};

/** A client that overrides all. */
class FullClient : public FakeClient {
  public:
    explicit FullClient(const char* format = "hevc", bool isVideo = true)
        : mFormat(format), mIsVideo(isVideo) {}
    bool isVideoClient() override { return mIsVideo; }
    void getClientResolution(int& width, int& height) override {
        width = 1920;
        height = 1080;
    }
    void getClientColorProperties(int& value) override { value = -2; }
    String8 getClientHDRType() override { return String8("HDR10+"); }
    int32_t getClientBitDepth() override { return 10; }
    String8 getClientScanType() override { return String8("p"); }
    int64_t getTimeSinceLastFrameRendered() override { return 0x0102030405060708; }
    int32_t getUid() override { return 10057; }
    int64_t getBufferCountSinceLastFlush() override { return -1; }
    bool isVideoClientUsingSecureMem() override { return true; }
    String8 getClientCodecFormat() override { return mFormat; }

  private:
    const String8 mFormat;
    const bool mIsVideo;
};

constexpr int64_t kId = 0x7f00'0000'1234;
#define ID " 34120000 007f0000"

template <typename Service>
struct ServiceCall {
    uint32_t code;
    uint32_t flags;
    const char* arguments;
    const char* reply;
    const char* received;
    const char* result;
    /** The caller's out-value starts as 5 or false and is part of the text. */
    std::function<std::string(Service&)> call;
};

/** Makes a call through `boundary` and compares what travels and what `service` receives. */
template <typename Caller, typename Callee>
void expectBytes(const ServiceCall<Caller>& call, Caller& proxy, const Boundary& boundary,
                 Callee& service) {
    SCOPED_TRACE(call.received);
    EXPECT_EQ(call.call(proxy), call.result);
    const Transaction& sent = boundary.last();
    EXPECT_EQ(sent.code, call.code);
    EXPECT_EQ(sent.flags, call.flags);
    EXPECT_THAT(sent.request, testing::MatchesRegex(std::string(SERVICE_TOKEN) + call.arguments));
    EXPECT_THAT(sent.reply, testing::MatchesRegex(call.reply));
    EXPECT_THAT(service.takeCalls(), testing::ElementsAre(call.received));
}

template <typename T, typename Service>
std::string about(Service& service, binder::Status (Service::*method)(int64_t, T*)) {
    T value{};
    if constexpr (!std::is_same_v<T, bool>) value = 5;
    const binder::Status status = (service.*method)(kId, &value);
    return textOf(status) + " " + std::to_string(value);
}

template <typename Form>
std::vector<ServiceCall<typename Form::Service>> serviceCalls() {
    using Service = typename Form::Service;
    return {
            {7, 0, " " LOCAL_BINDER, "00000000 2b000000 00000000", "registerListener(true, 0)",
             "ok 43",
             [](auto& service) {
                 // Either form's stub must see a foreign binder, as from another process.
                 const sp<typename Form::Listener> listener = new typename Form::ListenerProxy(
                         new Boundary(new typename Form::FakeListener));
                 int64_t id = 5;
                 const auto status = service.registerListener(listener, &id);
                 return textOf(status) + " " + std::to_string(id);
             }},
            {8, 1, " 2b000000 00000000", "", "unregisterListener(43)", "ok",
             [](auto& service) { return textOf(service.unregisterListener(43)); }},
            {9, 0, "", "00000000 02000000 01000000 00000000 ffffffff ffffffff",
             "getActiveVideoClients()", "ok { 1, -1 }",
             [](auto& service) {
                 std::vector<int64_t> ids{5};
                 const auto status = service.getActiveVideoClients(&ids);
                 return textOf(status) + " " + testing::PrintToString(ids);
             }},
            {10, 0, ID, "00000000 2c000000 00000000",
             "getTimeSinceLastFrameRendered(139637976732212, 0)", "ok 44",
             [](auto& service) { return about(service, &Service::getTimeSinceLastFrameRendered); }},
            {11, 0, ID, "00000000 2d000000", "getUid(139637976732212, 0)", "ok 45",
             [](auto& service) { return about(service, &Service::getUid); }},
            {12, 0, ID, "00000000 2e000000 00000000",
             "getBufferCountSinceLastFlush(139637976732212, 0)", "ok 46",
             [](auto& service) { return about(service, &Service::getBufferCountSinceLastFlush); }},
            {13, 0, ID, "00000000 01000000", "isVideoClientUsingSecureMem(139637976732212, false)",
             "ok 1",
             [](auto& service) { return about(service, &Service::isVideoClientUsingSecureMem); }},
            {14, 0,
             " 03000000 e9003dd8 00de0000 02000000 01000000 61000000 00000000 00000000 00000000",
             "00000000", "setMitigateFrameDropAllowlist(é😀, 'a''', )", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(
                         std::make_unique<std::string>("é😀"), {"a", ""}, {}));
             }},
            {14, 0, " ffffffff 00000000 01000000 02000000 62006300 00000000", "00000000",
             "setMitigateFrameDropAllowlist(null, , 'bc')", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(nullptr, {}, {"bc"}));
             }},
    };
}

}  // namespace android::test
