// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <binder/Status.h>

namespace android {
namespace media {

/**
 * What an observer of the logger service is told; registered with `registerListener()` of the
 * service. All calls are one-way. The definition is android/media/IMediaCodecLoggerListener.aidl;
 * this is what the platform's generator makes of it, in one file.
 */
class IMediaCodecLoggerListener : public IInterface {
  public:
    DECLARE_META_INTERFACE(MediaCodecLoggerListener)

    virtual binder::Status notifyFirstFrameRendered(int64_t clientId) = 0;
    virtual binder::Status notifyOutBufferAvailableAfterDelay(int64_t clientId,
                                                              int64_t delayMs) = 0;
    virtual binder::Status notifyVideoClientUnregistered(int32_t value) = 0;
};

/** A base for objects given to `setDefaultImpl()`: every method fails as an unknown transaction. */
class IMediaCodecLoggerListenerDefault : public IMediaCodecLoggerListener {
  public:
    binder::Status notifyFirstFrameRendered(int64_t clientId) override;
    binder::Status notifyOutBufferAvailableAfterDelay(int64_t clientId, int64_t delayMs) override;
    binder::Status notifyVideoClientUnregistered(int32_t value) override;
    IBinder* onAsBinder() override { return nullptr; }
};

class BpMediaCodecLoggerListener : public BpInterface<IMediaCodecLoggerListener> {
  public:
    explicit BpMediaCodecLoggerListener(const sp<IBinder>& remote);

    binder::Status notifyFirstFrameRendered(int64_t clientId) override;
    binder::Status notifyOutBufferAvailableAfterDelay(int64_t clientId, int64_t delayMs) override;
    binder::Status notifyVideoClientUnregistered(int32_t value) override;
};

class BnMediaCodecLoggerListener : public BnInterface<IMediaCodecLoggerListener> {
  public:
    BnMediaCodecLoggerListener();

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                        uint32_t flags = 0) override;

  private:
    status_t dispatch(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags);
};

}  // namespace media
}  // namespace android
