// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <binder/Status.h>

#include <mediaCodecLogger/binder/media/IMediaCodecLoggerListener.h>

namespace android {
namespace media {

/**
 * The logger service as observers see it: they subscribe to its events and ask about its clients.
 * The definition is android/media/IMediaCodecLoggerService.aidl; this is what the platform's
 * generator makes of it, in one file. Codecs use android::IMediaCodecLoggerService, which has the
 * same descriptor: never convert a local object of the one interface to the other.
 *
 * Every method returns how the call went; an out-value is written only when that is OK.
 */
class IMediaCodecLoggerService : public IInterface {
  public:
    DECLARE_META_INTERFACE(MediaCodecLoggerService)

    /** `result` is the id to unregister the listener with. A null listener is refused. */
    virtual binder::Status registerListener(const sp<IMediaCodecLoggerListener>& listener,
                                            int64_t* result) = 0;
    /** One-way. */
    virtual binder::Status unregisterListener(int64_t listenerId) = 0;
    virtual binder::Status getActiveVideoClients(std::vector<int64_t>* result) = 0;
    /** In milliseconds. */
    virtual binder::Status getTimeSinceLastFrameRendered(int64_t clientId, int64_t* result) = 0;
    virtual binder::Status getUid(int64_t clientId, int32_t* result) = 0;
    virtual binder::Status getBufferCountSinceLastFlush(int64_t clientId, int64_t* result) = 0;
    virtual binder::Status isVideoClientUsingSecureMem(int64_t clientId, bool* result) = 0;
    /** Texts are UTF-8; `text` may be absent. */
    virtual binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                         const std::vector<std::string>& listA,
                                                         const std::vector<std::string>& listB) = 0;
};

/** A base for objects given to `setDefaultImpl()`: every method fails as an unknown transaction. */
class IMediaCodecLoggerServiceDefault : public IMediaCodecLoggerService {
  public:
    binder::Status registerListener(const sp<IMediaCodecLoggerListener>& listener,
                                    int64_t* result) override;
    binder::Status unregisterListener(int64_t listenerId) override;
    binder::Status getActiveVideoClients(std::vector<int64_t>* result) override;
    binder::Status getTimeSinceLastFrameRendered(int64_t clientId, int64_t* result) override;
    binder::Status getUid(int64_t clientId, int32_t* result) override;
    binder::Status getBufferCountSinceLastFlush(int64_t clientId, int64_t* result) override;
    binder::Status isVideoClientUsingSecureMem(int64_t clientId, bool* result) override;
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override;
    IBinder* onAsBinder() override { return nullptr; }
};

class BpMediaCodecLoggerService : public BpInterface<IMediaCodecLoggerService> {
  public:
    explicit BpMediaCodecLoggerService(const sp<IBinder>& remote);

    binder::Status registerListener(const sp<IMediaCodecLoggerListener>& listener,
                                    int64_t* result) override;
    binder::Status unregisterListener(int64_t listenerId) override;
    binder::Status getActiveVideoClients(std::vector<int64_t>* result) override;
    binder::Status getTimeSinceLastFrameRendered(int64_t clientId, int64_t* result) override;
    binder::Status getUid(int64_t clientId, int32_t* result) override;
    binder::Status getBufferCountSinceLastFlush(int64_t clientId, int64_t* result) override;
    binder::Status isVideoClientUsingSecureMem(int64_t clientId, bool* result) override;
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override;
};

class BnMediaCodecLoggerService : public BnInterface<IMediaCodecLoggerService> {
  public:
    BnMediaCodecLoggerService();

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                        uint32_t flags = 0) override;

  private:
    status_t dispatch(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags);
};

}  // namespace media
}  // namespace android
