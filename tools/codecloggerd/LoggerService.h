// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <binder/IBinder.h>
#include <codeclogger/BnCodecLoggerAdmin.h>
#include <codeclogger/ServiceState.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <utils/Mutex.h>

#include "ClientTable.h"

namespace codeclogger {

/** Whether `packageName` is on the list. */
bool isListed(const Allowlist& allowlist, const std::string& packageName);

/**
 * A logger service. It knows every codec that registered and lives, passes their events on to its
 * listeners and keeps the allowlist of frame-drop mitigation, of which `text` is a label, `listA`
 * the packages and `listB` the exceptions.
 *
 * Observers use the same object through media::IMediaCodecLoggerService.
 *
 * Everybody who can reach the service may call everything; on a device that is for its policy to
 * restrict. Thread-safe; nothing is called out of the process with the lock held.
 */
class LoggerService : public android::BnMediaCodecLoggerService {
  public:
    LoggerService();

    void registerClient(int64_t id,
                        const android::sp<android::IMediaCodecLoggerClient>& client) override;
    void unregisterClient(int64_t id) override;
    /** The video client with the latest sign of life: registration, first or late output. */
    android::sp<android::IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override;
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override;
    void onFirstFrameRendered(int64_t id) override;
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override;
    android::binder::Status registerListener(
            const android::sp<android::media::IMediaCodecLoggerListener>& listener,
            int64_t* listenerId) override;
    android::binder::Status unregisterListener(int64_t listenerId) override;
    android::binder::Status getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) override;
    /** All video clients, the active one first. */
    android::binder::Status getActiveVideoClients(std::vector<int64_t>* ids) override;
    android::binder::Status getUid(int64_t id, int32_t* uid) override;
    android::binder::Status getBufferCountSinceLastFlush(int64_t id, int64_t* count) override;
    android::binder::Status isVideoClientUsingSecureMem(int64_t id, bool* secure) override;
    android::binder::Status setMitigateFrameDropAllowlist(
            const std::unique_ptr<std::string>& text, const std::vector<std::string>& listA,
            const std::vector<std::string>& listB) override;
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override;
    android::String8 getOldestAudioClientCodec() override;

    ServiceState getState();

  protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

  private:
    class Obituary;
    struct ListenerRecord {
        int64_t id;
        android::sp<android::media::IMediaCodecLoggerListener> listener;
    };

    void onBinderDied(const android::wp<android::IBinder>& binder);
    void noteGone(const ClientEntry& client, const char* how);
    template <typename Call>
    void notifyListeners(Call call);
    template <typename T>
    android::binder::Status ask(int64_t id, T (android::IMediaCodecLoggerClient::*method)(),
                                T* answer);

    const int64_t mStartedMs;
    android::sp<android::IBinder::DeathRecipient> mObituary;

    android::Mutex mLock;
    ClientTable mClients GUARDED_BY(mLock);
    std::vector<ListenerRecord> mListeners GUARDED_BY(mLock);
    int64_t mLastListenerId GUARDED_BY(mLock) = 0;
    Allowlist mAllowlist GUARDED_BY(mLock);
    int32_t mTunneledOpened GUARDED_BY(mLock) = 0;
    int32_t mTunneledClosed GUARDED_BY(mLock) = 0;
};

/** Shows what a LoggerService knows. */
class AdminService : public BnCodecLoggerAdmin {
  public:
    explicit AdminService(const android::sp<LoggerService>& service) : mService(service) {}
    android::binder::Status getState(ServiceState* state) override {
        *state = mService->getState();
        return android::binder::Status::ok();
    }

  private:
    const android::sp<LoggerService> mService;
};

}  // namespace codeclogger
