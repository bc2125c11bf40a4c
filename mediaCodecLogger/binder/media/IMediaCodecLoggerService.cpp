// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>

#include <binder/Stability.h>

#include <mediaCodecLogger/binder/TransactionCodes.h>
#include <mediaCodecLogger/binder/media/GeneratedSupport.h>

namespace android {
namespace media {

using namespace service_code;

namespace {

binder::Status unknownTransaction() {
    return binder::Status::fromStatusT(UNKNOWN_TRANSACTION);
}

template <typename T>
status_t answerAboutClient(IMediaCodecLoggerService& service,
                           binder::Status (IMediaCodecLoggerService::*method)(int64_t, T*),
                           const Parcel& data, Parcel* reply) {
    int64_t clientId = 0;
    const status_t status = wire::readAll(data, &clientId);
    if (status != OK) return status;
    T result{};
    const binder::Status answer = (service.*method)(clientId, &result);
    return writeAnswer(reply, answer, result);
}

}  // namespace

DEFINE_META_INTERFACE(MediaCodecLoggerService, u"android.media.IMediaCodecLoggerService")

binder::Status IMediaCodecLoggerServiceDefault::registerListener(
        const sp<IMediaCodecLoggerListener>&, int64_t*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::unregisterListener(int64_t) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::getActiveVideoClients(std::vector<int64_t>*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::getTimeSinceLastFrameRendered(int64_t, int64_t*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::getUid(int64_t, int32_t*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::getBufferCountSinceLastFlush(int64_t, int64_t*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::isVideoClientUsingSecureMem(int64_t, bool*) {
    return unknownTransaction();
}

binder::Status IMediaCodecLoggerServiceDefault::setMitigateFrameDropAllowlist(
        const std::unique_ptr<std::string>&, const std::vector<std::string>&,
        const std::vector<std::string>&) {
    return unknownTransaction();
}

BpMediaCodecLoggerService::BpMediaCodecLoggerService(const sp<IBinder>& remote)
    : BpInterface<IMediaCodecLoggerService>(remote) {}

binder::Status BpMediaCodecLoggerService::registerListener(
        const sp<IMediaCodecLoggerListener>& listener, int64_t* result) {
    return callForResult(*this, remote(), REGISTER_LISTENER,
                         &IMediaCodecLoggerService::registerListener, result, listener);
}

binder::Status BpMediaCodecLoggerService::unregisterListener(int64_t listenerId) {
    return callForStatus(*this, remote(), UNREGISTER_LISTENER, IBinder::FLAG_ONEWAY,
                         &IMediaCodecLoggerService::unregisterListener, listenerId);
}

binder::Status BpMediaCodecLoggerService::getActiveVideoClients(std::vector<int64_t>* result) {
    return callForResult(*this, remote(), GET_ACTIVE_VIDEO_CLIENTS,
                         &IMediaCodecLoggerService::getActiveVideoClients, result);
}

binder::Status BpMediaCodecLoggerService::getTimeSinceLastFrameRendered(int64_t clientId,
                                                                        int64_t* result) {
    return callForResult(*this, remote(), GET_TIME_SINCE_LAST_FRAME_RENDERED,
                         &IMediaCodecLoggerService::getTimeSinceLastFrameRendered, result,
                         clientId);
}

binder::Status BpMediaCodecLoggerService::getUid(int64_t clientId, int32_t* result) {
    return callForResult(*this, remote(), GET_UID, &IMediaCodecLoggerService::getUid, result,
                         clientId);
}

binder::Status BpMediaCodecLoggerService::getBufferCountSinceLastFlush(int64_t clientId,
                                                                       int64_t* result) {
    return callForResult(*this, remote(), GET_BUFFER_COUNT_SINCE_LAST_FLUSH,
                         &IMediaCodecLoggerService::getBufferCountSinceLastFlush, result, clientId);
}

binder::Status BpMediaCodecLoggerService::isVideoClientUsingSecureMem(int64_t clientId,
                                                                      bool* result) {
    return callForResult(*this, remote(), IS_VIDEO_CLIENT_USING_SECURE_MEM,
                         &IMediaCodecLoggerService::isVideoClientUsingSecureMem, result, clientId);
}

binder::Status BpMediaCodecLoggerService::setMitigateFrameDropAllowlist(
        const std::unique_ptr<std::string>& text, const std::vector<std::string>& listA,
        const std::vector<std::string>& listB) {
    return callForStatus(*this, remote(), SET_MITIGATE_FRAME_DROP_ALLOWLIST, 0,
                         &IMediaCodecLoggerService::setMitigateFrameDropAllowlist, text, listA,
                         listB);
}

BnMediaCodecLoggerService::BnMediaCodecLoggerService() {
    internal::Stability::markCompilationUnit(this);
}

status_t BnMediaCodecLoggerService::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                               uint32_t flags) {
    return nullAsException(dispatch(code, data, reply, flags), reply);
}

status_t BnMediaCodecLoggerService::dispatch(uint32_t code, const Parcel& data, Parcel* reply,
                                             uint32_t flags) {
    if (code < REGISTER_LISTENER || code > SET_MITIGATE_FRAME_DROP_ALLOWLIST) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    if (!data.checkInterface(this)) return BAD_TYPE;
    status_t status = OK;
    switch (code) {
        case REGISTER_LISTENER: {
            sp<IMediaCodecLoggerListener> listener;
            int64_t result = 0;
            status = wire::readAll(data, &listener);
            if (status != OK) break;
            const binder::Status answer = registerListener(listener, &result);
            return writeAnswer(reply, answer, result);
        }
        case UNREGISTER_LISTENER: {
            int64_t listenerId = 0;
            status = wire::readAll(data, &listenerId);
            if (status == OK) unregisterListener(listenerId);
            break;
        }
        case GET_ACTIVE_VIDEO_CLIENTS: {
            std::vector<int64_t> result;
            const binder::Status answer = getActiveVideoClients(&result);
            return writeAnswer(reply, answer, result);
        }
        case GET_TIME_SINCE_LAST_FRAME_RENDERED:
            return answerAboutClient(
                    *this, &IMediaCodecLoggerService::getTimeSinceLastFrameRendered, data, reply);
        case GET_UID:
            return answerAboutClient(*this, &IMediaCodecLoggerService::getUid, data, reply);
        case GET_BUFFER_COUNT_SINCE_LAST_FLUSH:
            return answerAboutClient(*this, &IMediaCodecLoggerService::getBufferCountSinceLastFlush,
                                     data, reply);
        case IS_VIDEO_CLIENT_USING_SECURE_MEM:
            return answerAboutClient(*this, &IMediaCodecLoggerService::isVideoClientUsingSecureMem,
                                     data, reply);
        case SET_MITIGATE_FRAME_DROP_ALLOWLIST: {
            std::unique_ptr<std::string> text;
            std::vector<std::string> listA;
            std::vector<std::string> listB;
            status = wire::readAll(data, &text, &listA, &listB);
            if (status != OK) break;
            return setMitigateFrameDropAllowlist(text, listA, listB).writeToParcel(reply);
        }
    }
    return status;
}

}  // namespace media
}  // namespace android
