// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>

namespace android::test {

/** An implementation that tells what it is told, one text a call: "name(argument, argument)". */
template <typename Stub>
class Recording : public Stub {
  public:
    binder::Status status;  // what every method of observers returns

  protected:
    /** Each call as it comes. */
    virtual void onCall(const std::string&) {}

    template <typename... Arguments>
    void received(const char* call, const Arguments&... arguments) {
        std::ostringstream text;
        [[maybe_unused]] const char* separator = "";
        text << call << '(' << std::boolalpha;
        ((text << std::exchange(separator, ", ") << arguments), ...);
        onCall(text.str() + ")");
    }
};

/** The eight methods that every form of the service interface has; `Stub` is that form's stub. */
template <typename Stub, typename Listener>
class RecordingObserverService : public Recording<Stub> {
  public:
    sp<Listener> lastListener;

    binder::Status registerListener(const sp<Listener>& listener, int64_t* result) override {
        lastListener = listener;
        return answer("registerListener", listener != nullptr, result, 43);
    }
    binder::Status unregisterListener(int64_t listenerId) override {
        this->received("unregisterListener", listenerId);
        return this->status;
    }
    binder::Status getActiveVideoClients(std::vector<int64_t>* result) override {
        this->received("getActiveVideoClients");
        result->assign({1, -1});
        return this->status;
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
        return answer("isVideoClientUsingSecureMem", clientId, result, true);
    }
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override {
        this->received("setMitigateFrameDropAllowlist", text ? *text : "null", quoted(listA),
                       quoted(listB));
        return this->status;
    }

  private:
    static std::string quoted(const std::vector<std::string>& list) {
        std::string all;
        for (const std::string& item : list) all += "'" + item + "'";
        return all;
    }
    template <typename Argument, typename T>
    binder::Status answer(const char* call, Argument argument, T* result, int value) {
        this->received(call, argument, *result);
        *result = static_cast<T>(value);
        return this->status;
    }
};

/**
 * The whole service as codecs see it. The id of the client that registered last shows as "client",
 * any other as "other", because an address says nothing. Thread-safe, but for observers.
 */
class RecordingService
    : public RecordingObserverService<BnMediaCodecLoggerService, media::IMediaCodecLoggerListener> {
  public:
    sp<IMediaCodecLoggerClient> client() {
        std::lock_guard<std::mutex> lock(mMutex);
        return mClient;
    }

    // What the service answers.
    String8 oldestAudioCodec;
    int32_t allowlisted = 0;

    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mId = id;
            mClient = client;
        }
        received("registerClient", nameOf(id));
    }
    void unregisterClient(int64_t id) override { received("unregisterClient", nameOf(id)); }
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override {
        received("getActiveVideoClient", id);
        std::lock_guard<std::mutex> lock(mMutex);
        id = mId;
        return mClient;
    }
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override {
        const auto text = [](const char* t) { return t != nullptr ? t : "null"; };
        received("updateHidlMediaMetrics", text(first), text(second), flagA, flagB);
    }
    void onFirstFrameRendered(int64_t id) override { received("onFirstFrameRendered", nameOf(id)); }
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override {
        received("onOutBufferAvailableAfterDelay", nameOf(id), delayMs);
    }
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override {
        received("isInMitigateFrameDropAllowlist", packageName);
        return allowlisted;
    }
    String8 getOldestAudioClientCodec() override {
        received("getOldestAudioClientCodec");
        return oldestAudioCodec;
    }

  private:
    std::string nameOf(int64_t id) {
        std::lock_guard<std::mutex> lock(mMutex);
        return id == mId ? "client" : "other";
    }
    std::mutex mMutex;
    int64_t mId = 0;
    sp<IMediaCodecLoggerClient> mClient;
};

}  // namespace android::test
