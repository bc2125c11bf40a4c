// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <android/codeclogger/BnCodecLoggerAdmin.h>
#include <android/codeclogger/ServiceState.h>
#include <binder/IBinder.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <tools/codeclogger/CodecInfo.h>
#include <utils/Mutex.h>

#include "ClientTable.h"

namespace android::codecloggerd {

using codeclogger::Allowlist;
using codeclogger::ServiceState;

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
class LoggerService : public BnMediaCodecLoggerService {
  public:
    LoggerService();

    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override;
    void unregisterClient(int64_t id) override;
    /** The video client with the latest sign of life: registration, first or late output. */
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override;
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override;
    void onFirstFrameRendered(int64_t id) override;
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override;
    binder::Status registerListener(const sp<media::IMediaCodecLoggerListener>& listener,
                                    int64_t* listenerId) override;
    binder::Status unregisterListener(int64_t listenerId) override;
    binder::Status getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) override;
    /** All video clients, the active one first. */
    binder::Status getActiveVideoClients(std::vector<int64_t>* ids) override;
    binder::Status getUid(int64_t id, int32_t* uid) override;
    binder::Status getBufferCountSinceLastFlush(int64_t id, int64_t* count) override;
    binder::Status isVideoClientUsingSecureMem(int64_t id, bool* secure) override;
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override;
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override;
    String8 getOldestAudioClientCodec() override;

    ServiceState getState();

    /**
     * Writes what codecloggerctl shows for the same words (kDumpWords). Codecs have a second to
     * answer, and a reader that takes nothing is given up after five.
     */
    status_t dump(int fd, const Vector<String16>& args) override;

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;

  private:
    class Obituary;
    struct ListenerRecord {
        int64_t id;
        sp<media::IMediaCodecLoggerListener> listener;
    };

    void onBinderDied(const wp<IBinder>& binder);
    void noteGone(const ClientEntry& client, const char* how);
    template <typename Call>
    void notifyListeners(Call call);
    template <typename T>
    binder::Status ask(int64_t id, T (IMediaCodecLoggerClient::*method)(), T* answer);

    const int64_t mStartedMs;
    codeclogger::CodecQuery mQuery;
    sp<IBinder::DeathRecipient> mObituary;

    Mutex mLock;
    ClientTable mClients GUARDED_BY(mLock);
    std::vector<ListenerRecord> mListeners GUARDED_BY(mLock);
    int64_t mLastListenerId GUARDED_BY(mLock) = 0;
    Allowlist mAllowlist GUARDED_BY(mLock);
    int32_t mTunneledOpened GUARDED_BY(mLock) = 0;
    int32_t mTunneledClosed GUARDED_BY(mLock) = 0;
};

/** Shows what a LoggerService knows. */
class AdminService : public codeclogger::BnCodecLoggerAdmin {
  public:
    explicit AdminService(const sp<LoggerService>& service) : mService(service) {}
    binder::Status getState(ServiceState* state) override {
        *state = mService->getState();
        return binder::Status::ok();
    }

  private:
    const sp<LoggerService> mService;
};

}  // namespace android::codecloggerd
