// SPDX-License-Identifier: Apache-2.0
// Implementations of the interfaces that write down what reaches them and answer fixed values, and
// the calls that every form of the service interface has, with their bytes.
#pragma once

#include <limits>
#include <memory>

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <tests/binder/WireTest.h>

namespace android::test {

/** The calls that an object received, one text each: the name and the arguments. */
class CallLog {
  public:
    std::vector<std::string> takeCalls() { return std::exchange(mCalls, {}); }

  protected:
    template <typename... Arguments>
    void received(const char* call, const Arguments&... arguments) {
        std::ostringstream text;
        text << call;
        ((text << ' ' << arguments), ...);
        mCalls.push_back(text.str());
    }

    static std::string quoted(const char* text) {
        return text != nullptr ? "'" + std::string(text) + "'" : "null";
    }

  private:
    std::vector<std::string> mCalls;
};

/** The eight methods that every form of the service interface has; `Stub` is that form's stub. */
template <typename Stub, typename Listener>
class FakeObserverService : public Stub, public CallLog {
  public:
    binder::Status status;  // what every method returns
    sp<Listener> lastListener;

    binder::Status registerListener(const sp<Listener>& listener, int64_t* result) override {
        received(listener != nullptr ? "registerListener" : "registerListener(null)", *result);
        lastListener = listener;
        *result = 43;
        return status;
    }
    binder::Status unregisterListener(int64_t listenerId) override {
        received("unregisterListener", listenerId);
        return status;
    }
    binder::Status getActiveVideoClients(std::vector<int64_t>* result) override {
        received("getActiveVideoClients");
        result->assign({1, -1});
        return status;
    }
    binder::Status getTimeSinceLastFrameRendered(int64_t clientId, int64_t* result) override {
        return answer("getTimeSinceLastFrameRendered", clientId, result, 44);
    }
    binder::Status getUid(int64_t clientId, int32_t* result) override {
        return answer("getUid", clientId, result, 45);
    }
    binder::Status getBufferCountSinceLastFlush(int64_t clientId, int64_t* result) override {
        return answer("getBufferCountSinceLastFlush", clientId, result, 46);
    }
    binder::Status isVideoClientUsingSecureMem(int64_t clientId, bool* result) override {
        return answer("isVideoClientUsingSecureMem", clientId, result, 1);
    }
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override {
        received("setMitigateFrameDropAllowlist", quoted(text ? text->c_str() : nullptr),
                 listOf(listA), listOf(listB));
        return status;
    }

  private:
    template <typename T>
    binder::Status answer(const char* call, int64_t clientId, T* result, int value) {
        received(call, clientId, *result);
        *result = static_cast<T>(value);
        return status;
    }
};

template <typename Stub>
class FakeListenerOf : public Stub, public CallLog {
  public:
    binder::Status status;

    binder::Status notifyFirstFrameRendered(int64_t clientId) override {
        received("notifyFirstFrameRendered", clientId);
        return status;
    }
    binder::Status notifyOutBufferAvailableAfterDelay(int64_t clientId, int64_t delayMs) override {
        received("notifyOutBufferAvailableAfterDelay", clientId, delayMs);
        return status;
    }
    binder::Status notifyVideoClientUnregistered(int32_t value) override {
        received("notifyVideoClientUnregistered", value);
        return status;
    }
};
using FakeListener = FakeListenerOf<media::BnMediaCodecLoggerListener>;

/** A client that overrides only what it must. */
class FakeClient : public BnMediaCodecLoggerClient {
  public:
    String8 getStatus() override { return String8("\tHW: YES\n"); }
    String8 getPackageName() override { return String8("a.bc"); }
    bool isVideoClient() override { return true; }
    int32_t getPid() override { return 4711; }
    void initialize(int, bool, String8) override {}
    void getClientResolution(int& width, int& height) override {
        width = 1920;
        height = 1080;
    }
    void getClientColorProperties(int& value) override { value = -2; }
};

/** The whole service as codecs see it. */
class FakeCodecService
    : public FakeObserverService<BnMediaCodecLoggerService, media::IMediaCodecLoggerListener> {
  public:
    sp<IMediaCodecLoggerClient> activeClient = new FakeClient;

    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override {
        received("registerClient", id,
                 client != nullptr ? client->getPackageName().string() : "null");
    }
    void unregisterClient(int64_t id) override { received("unregisterClient", id); }
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override {
        received("getActiveVideoClient", id);
        id = 42;
        return activeClient;
    }
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override {
        received("updateHidlMediaMetrics", quoted(first), quoted(second), flagA, flagB);
    }
    void onFirstFrameRendered(int64_t id) override { received("onFirstFrameRendered", id); }
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override {
        received("onOutBufferAvailableAfterDelay", id, delayMs);
    }
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override {
        received("isInMitigateFrameDropAllowlist", packageName);
        return 47;
    }
    String8 getOldestAudioClientCodec() override {
        received("getOldestAudioClientCodec");
        return String8("aac");
    }
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
    EXPECT_THAT(sent.request, HasBytes(std::string(SERVICE_TOKEN) + call.arguments));
    EXPECT_THAT(sent.reply, HasBytes(call.reply));
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
            {7, 0, " " LOCAL_BINDER, "00000000 2b000000 00000000", "registerListener 0", "ok 43",
             [](auto& service) {
                 // Either form's stub must see a foreign binder, as from another process.
                 const sp<typename Form::Listener> listener = new typename Form::ListenerProxy(
                         new Boundary(new typename Form::FakeListener));
                 int64_t id = 5;
                 const auto status = service.registerListener(listener, &id);
                 return textOf(status) + " " + std::to_string(id);
             }},
            {8, 1, " 2b000000 00000000", "", "unregisterListener 43", "ok",
             [](auto& service) { return textOf(service.unregisterListener(43)); }},
            {9, 0, "", "00000000 02000000 01000000 00000000 ffffffff ffffffff",
             "getActiveVideoClients", "ok {1 -1}",
             [](auto& service) {
                 std::vector<int64_t> ids{5};
                 const auto status = service.getActiveVideoClients(&ids);
                 return textOf(status) + " " + listOf(ids);
             }},
            {10, 0, ID, "00000000 2c000000 00000000",
             "getTimeSinceLastFrameRendered 139637976732212 0", "ok 44",
             [](auto& service) { return about(service, &Service::getTimeSinceLastFrameRendered); }},
            {11, 0, ID, "00000000 2d000000", "getUid 139637976732212 0", "ok 45",
             [](auto& service) { return about(service, &Service::getUid); }},
            {12, 0, ID, "00000000 2e000000 00000000",
             "getBufferCountSinceLastFlush 139637976732212 0", "ok 46",
             [](auto& service) { return about(service, &Service::getBufferCountSinceLastFlush); }},
            {13, 0, ID, "00000000 01000000", "isVideoClientUsingSecureMem 139637976732212 0",
             "ok 1",
             [](auto& service) { return about(service, &Service::isVideoClientUsingSecureMem); }},
            {14, 0,
             " 03000000 e9003dd8 00de0000 02000000 01000000 61000000 00000000 00000000 00000000",
             "00000000", "setMitigateFrameDropAllowlist 'é😀' {a } {}", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(
                         std::make_unique<std::string>("é😀"), {"a", ""}, {}));
             }},
            {14, 0, " ffffffff 00000000 01000000 02000000 62006300 00000000", "00000000",
             "setMitigateFrameDropAllowlist null {} {bc}", "ok",
             [](auto& service) {
                 return textOf(service.setMitigateFrameDropAllowlist(nullptr, {}, {"bc"}));
             }},
    };
}

}  // namespace android::test
