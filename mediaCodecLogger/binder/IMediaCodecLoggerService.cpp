// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "IMediaCodecLoggerService"

#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>

#include <inttypes.h>

#include <iterator>

#include <log/log.h>

#include <mediaCodecLogger/binder/InterfaceSupport.h>
#include <mediaCodecLogger/binder/TransactionCodes.h>

namespace android {

using namespace service_code;

namespace {

/** Passes a failed transaction through and logs it under the name of the call. */
status_t logged(status_t status, const char* call) {
    if (status != NO_ERROR) ALOGW("%s Transaction failed", call);
    return status;
}

}  // namespace

DEFINE_META_INTERFACE(MediaCodecLoggerService, u"android.media.IMediaCodecLoggerService")

BpMediaCodecLoggerService::BpMediaCodecLoggerService(const sp<IBinder>& remote)
    : BpInterface<IMediaCodecLoggerService>(remote) {}

template <typename... Arguments>
status_t BpMediaCodecLoggerService::call(uint32_t code, uint32_t flags, Parcel* reply,
                                         const Arguments&... arguments) {
    return wire::transact(remote(), getInterfaceDescriptor(), code, flags, reply, arguments...);
}

void BpMediaCodecLoggerService::registerClient(int64_t id,
                                               const sp<IMediaCodecLoggerClient>& client) {
    Parcel reply;
    if (call(REGISTER_CLIENT, 0, &reply, id, client) != NO_ERROR) {
        ALOGW("registerClient fail id:%" PRId64, id);
    }
}

void BpMediaCodecLoggerService::unregisterClient(int64_t id) {
    Parcel reply;
    if (call(UNREGISTER_CLIENT, 0, &reply, id) != NO_ERROR) {
        ALOGW("unregisterClient fail id:%" PRId64, id);
    }
}

sp<IMediaCodecLoggerClient> BpMediaCodecLoggerService::getActiveVideoClient(int64_t& id) {
    Parcel reply;
    if (call(GET_ACTIVE_VIDEO_CLIENT, 0, &reply) != NO_ERROR) return nullptr;
    id = reply.readInt64();
    return IMediaCodecLoggerClient::asInterface(reply.readStrongBinder());
}

void BpMediaCodecLoggerService::updateHidlMediaMetrics(const char* first, const char* second,
                                                       const bool& flagA, const bool& flagB) {
    Parcel reply;
    const int32_t a = flagA;
    const int32_t b = flagB;
    const status_t status = flagB ? call(UPDATE_HIDL_MEDIA_METRICS, 0, &reply, b, a)
                                  : call(UPDATE_HIDL_MEDIA_METRICS, 0, &reply, b, a,
                                         wire::CText{first}, wire::CText{second});
    if (status == NO_ERROR) ALOGI("Transaction successfull");
}

void BpMediaCodecLoggerService::onFirstFrameRendered(int64_t id) {
    Parcel reply;
    call(ON_FIRST_FRAME_RENDERED, IBinder::FLAG_ONEWAY, &reply, id);
}

void BpMediaCodecLoggerService::onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) {
    Parcel reply;
    call(ON_OUT_BUFFER_AVAILABLE_AFTER_DELAY, IBinder::FLAG_ONEWAY, &reply, id, delayMs);
}

binder::Status BpMediaCodecLoggerService::registerListener(
        const sp<media::IMediaCodecLoggerListener>& listener, int64_t* listenerId) {
    Parcel reply;
    const status_t result =
            logged(call(REGISTER_LISTENER, 0, &reply, listener), "registerListener");
    if (result != NO_ERROR) return binder::Status::fromStatusT(result);
    binder::Status status;
    status.readFromParcel(reply);
    if (status.exceptionCode() == binder::Status::EX_NONE) reply.readInt64(listenerId);
    return status;
}

// Waits for the service, although observers send the same code one-way.
binder::Status BpMediaCodecLoggerService::unregisterListener(int64_t listenerId) {
    Parcel reply;
    return binder::Status::fromStatusT(
            logged(call(UNREGISTER_LISTENER, 0, &reply, listenerId), "unregisterListener"));
}

template <typename T>
binder::Status BpMediaCodecLoggerService::askAboutClient(uint32_t code, int64_t id, T* value) {
    Parcel reply;
    const status_t result = call(code, 0, &reply, id);
    if (result != NO_ERROR) return binder::Status::fromStatusT(result);
    binder::Status status;
    status.readFromParcel(reply);
    if (status.isOk()) wire::read(reply, value);
    return status;
}

binder::Status BpMediaCodecLoggerService::getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) {
    return askAboutClient(GET_TIME_SINCE_LAST_FRAME_RENDERED, id, ms);
}

binder::Status BpMediaCodecLoggerService::getActiveVideoClients(std::vector<int64_t>* ids) {
    ALOGI("getActiveVideoClients start");
    Parcel reply;
    const status_t result = call(GET_ACTIVE_VIDEO_CLIENTS, 0, &reply);
    if (result != NO_ERROR) {
        ALOGI("getActiveVideoClients returning empty");
        return binder::Status::fromStatusT(result);
    }
    binder::Status status;
    status.readFromParcel(reply);
    if (status.isOk()) wire::read(reply, ids);
    ALOGI("getActiveVideoClients returning the value %d", static_cast<int>(ids->size()));
    return status;
}

binder::Status BpMediaCodecLoggerService::getUid(int64_t id, int32_t* uid) {
    return askAboutClient(GET_UID, id, uid);
}

binder::Status BpMediaCodecLoggerService::getBufferCountSinceLastFlush(int64_t id, int64_t* count) {
    return askAboutClient(GET_BUFFER_COUNT_SINCE_LAST_FLUSH, id, count);
}

binder::Status BpMediaCodecLoggerService::isVideoClientUsingSecureMem(int64_t id, bool* secure) {
    return askAboutClient(IS_VIDEO_CLIENT_USING_SECURE_MEM, id, secure);
}

// The stub replies nothing, so there is no status to read.
binder::Status BpMediaCodecLoggerService::setMitigateFrameDropAllowlist(
        const std::unique_ptr<std::string>& text, const std::vector<std::string>& listA,
        const std::vector<std::string>& listB) {
    Parcel reply;
    return binder::Status::fromStatusT(
            logged(call(SET_MITIGATE_FRAME_DROP_ALLOWLIST, 0, &reply, text, listA, listB),
                   "setMitigateFrameDropAllowlist"));
}

int32_t BpMediaCodecLoggerService::isInMitigateFrameDropAllowlist(const char* packageName) {
    Parcel reply;
    if (call(IS_IN_MITIGATE_FRAME_DROP_ALLOWLIST, 0, &reply, wire::CText{packageName}) !=
        NO_ERROR) {
        ALOGW("isInMitigateFrameDropAllowlist failed!");
    }
    return reply.readInt32();
}

String8 BpMediaCodecLoggerService::getOldestAudioClientCodec() {
    Parcel reply;
    logged(call(GET_OLDEST_AUDIO_CLIENT_CODEC, 0, &reply), "getOldestAudioClientCodec");
    return reply.readString8();
}

namespace {

using Answer = void (*)(IMediaCodecLoggerService& service, const Parcel& data, Parcel* reply);

void answerRegisterClient(IMediaCodecLoggerService& service, const Parcel& data, Parcel*) {
    const int64_t id = data.readInt64();
    service.registerClient(id, IMediaCodecLoggerClient::asInterface(data.readStrongBinder()));
}

void answerGetActiveVideoClient(IMediaCodecLoggerService& service, const Parcel&, Parcel* reply) {
    int64_t id = 0;
    const sp<IMediaCodecLoggerClient> client = service.getActiveVideoClient(id);
    reply->writeInt64(id);
    wire::write(reply, client);
}

// Texts that the proxy sent arrive here as empty: it writes them without a length and this reads
// one. Both sides stay as they are, because either may meet an old counterpart.
void answerUpdateHidlMediaMetrics(IMediaCodecLoggerService& service, const Parcel& data, Parcel*) {
    const bool flagB = data.readInt32() != 0;
    const bool flagA = data.readInt32() != 0;
    if (flagB) {
        service.updateHidlMediaMetrics(nullptr, nullptr, flagA, flagB);
        return;
    }
    const String8 first = data.readString8();
    const String8 second = data.readString8();
    service.updateHidlMediaMetrics(first.string(), second.string(), flagA, flagB);
}

void answerDelayedOutput(IMediaCodecLoggerService& service, const Parcel& data, Parcel*) {
    const int64_t id = data.readInt64();
    const int64_t delayMs = data.readInt64();
    service.onOutBufferAvailableAfterDelay(id, delayMs);
}

/** A method whose only argument is an id and whose result, if any, is not sent. */
template <auto method>
void takeId(IMediaCodecLoggerService& service, const Parcel& data, Parcel*) {
    (service.*method)(data.readInt64());
}

// Out-values follow the status whatever the status is; callers depend on that layout.

void answerRegisterListener(IMediaCodecLoggerService& service, const Parcel& data, Parcel* reply) {
    const sp<IBinder> listener = data.readStrongBinder();
    int64_t listenerId = 0;
    service.registerListener(media::IMediaCodecLoggerListener::asInterface(listener), &listenerId)
            .writeToParcel(reply);
    wire::write(reply, listenerId);
}

void answerGetActiveVideoClients(IMediaCodecLoggerService& service, const Parcel&, Parcel* reply) {
    std::vector<int64_t> ids;
    service.getActiveVideoClients(&ids).writeToParcel(reply);
    wire::write(reply, ids);
}

template <typename T, binder::Status (IMediaCodecLoggerService::*method)(int64_t, T*)>
void answerAboutClient(IMediaCodecLoggerService& service, const Parcel& data, Parcel* reply) {
    const int64_t id = data.readInt64();
    T value{};
    (service.*method)(id, &value).writeToParcel(reply);
    wire::write(reply, value);
}

void answerSetMitigateFrameDropAllowlist(IMediaCodecLoggerService& service, const Parcel& data,
                                         Parcel*) {
    std::unique_ptr<std::string> text;
    std::vector<std::string> listA;
    std::vector<std::string> listB;
    wire::readAll(data, &text, &listA, &listB);
    service.setMitigateFrameDropAllowlist(text, listA, listB);
}

void answerIsInMitigateFrameDropAllowlist(IMediaCodecLoggerService& service, const Parcel& data,
                                          Parcel* reply) {
    const char* name = data.readCString();
    wire::write(reply, service.isInMitigateFrameDropAllowlist(name != nullptr ? name : ""));
}

void answerGetOldestAudioClientCodec(IMediaCodecLoggerService& service, const Parcel&,
                                     Parcel* reply) {
    wire::write(reply, service.getOldestAudioClientCodec());
}

using Service = IMediaCodecLoggerService;
constexpr Answer kAnswers[] = {
        answerRegisterClient,
        takeId<&Service::unregisterClient>,
        answerGetActiveVideoClient,
        answerUpdateHidlMediaMetrics,
        takeId<&Service::onFirstFrameRendered>,
        answerDelayedOutput,
        answerRegisterListener,
        takeId<&Service::unregisterListener>,
        answerGetActiveVideoClients,
        answerAboutClient<int64_t, &Service::getTimeSinceLastFrameRendered>,
        answerAboutClient<int32_t, &Service::getUid>,
        answerAboutClient<int64_t, &Service::getBufferCountSinceLastFlush>,
        answerAboutClient<bool, &Service::isVideoClientUsingSecureMem>,
        answerSetMitigateFrameDropAllowlist,
        answerIsInMitigateFrameDropAllowlist,
        answerGetOldestAudioClientCodec,
};
static_assert(std::size(kAnswers) == GET_OLDEST_AUDIO_CLIENT_CODEC - REGISTER_CLIENT + 1);

}  // namespace

status_t BnMediaCodecLoggerService::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                               uint32_t flags) {
    if (code < REGISTER_CLIENT || code > GET_OLDEST_AUDIO_CLIENT_CODEC) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    CHECK_INTERFACE(IMediaCodecLoggerService, data, reply);
    kAnswers[code - REGISTER_CLIENT](*this, data, reply);
    return NO_ERROR;
}

}  // namespace android
