// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <mutex>
#include <string>
#include <vector>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>

namespace android::test {

/**
 * A logger service that tells what it is told, one text a call. The id of the client that
 * registered last shows as "client", any other as "other", because an address says nothing.
 * Thread-safe.
 */
class RecordingService : public BnMediaCodecLoggerService {
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
        onCall("registerClient(" + nameOf(id) + ")");
    }
    void unregisterClient(int64_t id) override { onCall("unregisterClient(" + nameOf(id) + ")"); }
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override {
        std::lock_guard<std::mutex> lock(mMutex);
        id = mId;
        return mClient;
    }
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override {
        const auto text = [](const char* t) { return std::string(t != nullptr ? t : "null"); };
        onCall("updateHidlMediaMetrics(" + text(first) + ", " + text(second) + ", " +
               (flagA ? "true" : "false") + ", " + (flagB ? "true" : "false") + ")");
    }
    void onFirstFrameRendered(int64_t id) override {
        onCall("onFirstFrameRendered(" + nameOf(id) + ")");
    }
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override {
        onCall("onOutBufferAvailableAfterDelay(" + nameOf(id) + ", " + std::to_string(delayMs) +
               ")");
    }
    binder::Status registerListener(const sp<media::IMediaCodecLoggerListener>&,
                                    int64_t*) override {
        return {};
    }
    binder::Status unregisterListener(int64_t) override { return {}; }
    binder::Status getTimeSinceLastFrameRendered(int64_t, int64_t*) override { return {}; }
    binder::Status getActiveVideoClients(std::vector<int64_t>*) override { return {}; }
    binder::Status getUid(int64_t, int32_t*) override { return {}; }
    binder::Status getBufferCountSinceLastFlush(int64_t, int64_t*) override { return {}; }
    binder::Status isVideoClientUsingSecureMem(int64_t, bool*) override { return {}; }
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>&,
                                                 const std::vector<std::string>&,
                                                 const std::vector<std::string>&) override {
        return {};
    }
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override {
        onCall(std::string("isInMitigateFrameDropAllowlist(") + packageName + ")");
        return allowlisted;
    }
    String8 getOldestAudioClientCodec() override {
        onCall("getOldestAudioClientCodec()");
        return oldestAudioCodec;
    }

  protected:
    /** Each call as it comes. */
    virtual void onCall(const std::string&) {}

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
