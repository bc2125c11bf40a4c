// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerListener.h>

#include <binder/Stability.h>

#include <mediaCodecLogger/binder/TransactionCodes.h>
#include <mediaCodecLogger/binder/media/GeneratedSupport.h>

namespace android {
namespace media {

using namespace listener_code;

DEFINE_META_INTERFACE(MediaCodecLoggerListener, u"android.media.IMediaCodecLoggerListener")

binder::Status IMediaCodecLoggerListenerDefault::notifyFirstFrameRendered(int64_t) {
    return binder::Status::fromStatusT(UNKNOWN_TRANSACTION);
}

binder::Status IMediaCodecLoggerListenerDefault::notifyOutBufferAvailableAfterDelay(int64_t,
                                                                                    int64_t) {
    return binder::Status::fromStatusT(UNKNOWN_TRANSACTION);
}

binder::Status IMediaCodecLoggerListenerDefault::notifyVideoClientUnregistered(int32_t) {
    return binder::Status::fromStatusT(UNKNOWN_TRANSACTION);
}

BpMediaCodecLoggerListener::BpMediaCodecLoggerListener(const sp<IBinder>& remote)
    : BpInterface<IMediaCodecLoggerListener>(remote) {}

binder::Status BpMediaCodecLoggerListener::notifyFirstFrameRendered(int64_t clientId) {
    return callForStatus(*this, remote(), NOTIFY_FIRST_FRAME_RENDERED, IBinder::FLAG_ONEWAY,
                         &IMediaCodecLoggerListener::notifyFirstFrameRendered, clientId);
}

binder::Status BpMediaCodecLoggerListener::notifyOutBufferAvailableAfterDelay(int64_t clientId,
                                                                              int64_t delayMs) {
    return callForStatus(
            *this, remote(), NOTIFY_OUT_BUFFER_AVAILABLE_AFTER_DELAY, IBinder::FLAG_ONEWAY,
            &IMediaCodecLoggerListener::notifyOutBufferAvailableAfterDelay, clientId, delayMs);
}

binder::Status BpMediaCodecLoggerListener::notifyVideoClientUnregistered(int32_t value) {
    return callForStatus(*this, remote(), NOTIFY_VIDEO_CLIENT_UNREGISTERED, IBinder::FLAG_ONEWAY,
                         &IMediaCodecLoggerListener::notifyVideoClientUnregistered, value);
}

BnMediaCodecLoggerListener::BnMediaCodecLoggerListener() {
    internal::Stability::markCompilationUnit(this);
}

status_t BnMediaCodecLoggerListener::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                                uint32_t flags) {
    return nullAsException(dispatch(code, data, reply, flags), reply);
}

// The calls are one-way: what the methods return has nowhere to go.
status_t BnMediaCodecLoggerListener::dispatch(uint32_t code, const Parcel& data, Parcel* reply,
                                              uint32_t flags) {
    if (code < NOTIFY_FIRST_FRAME_RENDERED || code > NOTIFY_VIDEO_CLIENT_UNREGISTERED) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    if (!data.checkInterface(this)) return BAD_TYPE;
    status_t status = OK;
    switch (code) {
        case NOTIFY_FIRST_FRAME_RENDERED: {
            int64_t clientId = 0;
            status = wire::readAll(data, &clientId);
            if (status == OK) notifyFirstFrameRendered(clientId);
            break;
        }
        case NOTIFY_OUT_BUFFER_AVAILABLE_AFTER_DELAY: {
            int64_t clientId = 0;
            int64_t delayMs = 0;
            status = wire::readAll(data, &clientId, &delayMs);
            if (status == OK) notifyOutBufferAvailableAfterDelay(clientId, delayMs);
            break;
        }
        case NOTIFY_VIDEO_CLIENT_UNREGISTERED: {
            int32_t value = 0;
            status = wire::readAll(data, &value);
            if (status == OK) notifyVideoClientUnregistered(value);
            break;
        }
    }
    return status;
}

}  // namespace media
}  // namespace android
