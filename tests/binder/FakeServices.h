// SPDX-License-Identifier: Apache-2.0
// Implementations of the interfaces that write down what reaches them and answer fixed values.
#pragma once

#include <limits>
#include <memory>

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
        received("getTimeSinceLastFrameRendered", clientId, *result);
        *result = 44;
        return status;
    }
    binder::Status getUid(int64_t clientId, int32_t* result) override {
        received("getUid", clientId, *result);
        *result = 45;
        return status;
    }
    binder::Status getBufferCountSinceLastFlush(int64_t clientId, int64_t* result) override {
        received("getBufferCountSinceLastFlush", clientId, *result);
        *result = 46;
        return status;
    }
    binder::Status isVideoClientUsingSecureMem(int64_t clientId, bool* result) override {
        received("isVideoClientUsingSecureMem", clientId, *result);
        *result = true;
        return status;
    }
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override {
        received("setMitigateFrameDropAllowlist", quoted(text ? text->c_str() : nullptr),
                 listOf(listA), listOf(listB));
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

class FakeClient : public BnMediaCodecLoggerClient {
  public:
    String8 getStatus() override { return String8("status"); }
    String8 getPackageName() override { return String8("a.bc"); }
    bool isVideoClient() override { return true; }
    int32_t getPid() override { return 1; }
    void initialize(int, bool, String8) override {}
    void getClientResolution(int&, int&) override {}
    void getClientColorProperties(int&) override {}
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

}  // namespace android::test
