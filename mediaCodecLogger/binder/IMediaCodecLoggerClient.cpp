// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>

#include <iterator>

#include <mediaCodecLogger/binder/InterfaceSupport.h>
#include <mediaCodecLogger/binder/TransactionCodes.h>

namespace android {

using namespace client_code;

namespace {

using Answer = void (*)(IMediaCodecLoggerClient& client, Parcel* reply);

template <auto method>
void answer(IMediaCodecLoggerClient& client, Parcel* reply) {
    wire::write(reply, (client.*method)());
}

void answerClientResolution(IMediaCodecLoggerClient& client, Parcel* reply) {
    int width = 0;
    int height = 0;
    client.getClientResolution(width, height);
    reply->writeInt32(width);
    reply->writeInt32(height);
}

void answerClientColorProperties(IMediaCodecLoggerClient& client, Parcel* reply) {
    int value = 0;
    client.getClientColorProperties(value);
    reply->writeInt32(value);
}

constexpr Answer kAnswers[] = {
        answer<&IMediaCodecLoggerClient::getStatus>,
        answer<&IMediaCodecLoggerClient::getPackageName>,
        answer<&IMediaCodecLoggerClient::isVideoClient>,
        answer<&IMediaCodecLoggerClient::getPid>,
        nullptr,  // initialize
        answerClientResolution,
        answer<&IMediaCodecLoggerClient::getClientHDRType>,
        answer<&IMediaCodecLoggerClient::getClientBitDepth>,
        answer<&IMediaCodecLoggerClient::getClientScanType>,
        answerClientColorProperties,
        answer<&IMediaCodecLoggerClient::getTimeSinceLastFrameRendered>,
        answer<&IMediaCodecLoggerClient::getUid>,
        answer<&IMediaCodecLoggerClient::getBufferCountSinceLastFlush>,
        answer<&IMediaCodecLoggerClient::isVideoClientUsingSecureMem>,
        answer<&IMediaCodecLoggerClient::getClientCodecFormat>,
};
static_assert(std::size(kAnswers) == GET_CLIENT_CODEC_FORMAT - GET_STATUS + 1);

}  // namespace

DEFINE_META_INTERFACE(MediaCodecLoggerClient, u"android.media.IMediaCodecLoggerClient")

int64_t IMediaCodecLoggerClient::getTimeSinceLastFrameRendered() {
    return 0;
}

int32_t IMediaCodecLoggerClient::getUid() {
    return -1;
}

int64_t IMediaCodecLoggerClient::getBufferCountSinceLastFlush() {
    return 0;
}

bool IMediaCodecLoggerClient::isVideoClientUsingSecureMem() {
    return false;
}

String8 IMediaCodecLoggerClient::getClientCodecFormat() {
    return String8("other");
}

BpMediaCodecLoggerClient::BpMediaCodecLoggerClient(const sp<IBinder>& remote)
    : BpInterface<IMediaCodecLoggerClient>(remote) {}

status_t BpMediaCodecLoggerClient::call(uint32_t code, Parcel* reply) {
    return wire::transact(remote(), getInterfaceDescriptor(), code, 0, reply);
}

template <typename T>
T BpMediaCodecLoggerClient::ask(uint32_t code, T (Parcel::*read)() const) {
    Parcel reply;
    return call(code, &reply) == NO_ERROR ? (reply.*read)() : T();
}

String8 BpMediaCodecLoggerClient::getStatus() {
    return ask(GET_STATUS, &Parcel::readString8);
}

String8 BpMediaCodecLoggerClient::getPackageName() {
    return ask(GET_PACKAGE_NAME, &Parcel::readString8);
}

bool BpMediaCodecLoggerClient::isVideoClient() {
    return ask(IS_VIDEO_CLIENT, &Parcel::readBool);
}

int32_t BpMediaCodecLoggerClient::getPid() {
    return ask(GET_PID, &Parcel::readInt32);
}

void BpMediaCodecLoggerClient::initialize(int, bool, String8) {}

void BpMediaCodecLoggerClient::getClientResolution(int& width, int& height) {
    Parcel reply;
    if (call(GET_CLIENT_RESOLUTION, &reply) != NO_ERROR) return;
    width = reply.readInt32();
    height = reply.readInt32();
}

String8 BpMediaCodecLoggerClient::getClientHDRType() {
    return ask(GET_CLIENT_HDR_TYPE, &Parcel::readString8);
}

int32_t BpMediaCodecLoggerClient::getClientBitDepth() {
    return ask(GET_CLIENT_BIT_DEPTH, &Parcel::readInt32);
}

String8 BpMediaCodecLoggerClient::getClientScanType() {
    return ask(GET_CLIENT_SCAN_TYPE, &Parcel::readString8);
}

void BpMediaCodecLoggerClient::getClientColorProperties(int& value) {
    Parcel reply;
    if (call(GET_CLIENT_COLOR_PROPERTIES, &reply) == NO_ERROR) value = reply.readInt32();
}

int64_t BpMediaCodecLoggerClient::getTimeSinceLastFrameRendered() {
    return ask(GET_TIME_SINCE_LAST_FRAME_RENDERED, &Parcel::readInt64);
}

int32_t BpMediaCodecLoggerClient::getUid() {
    return ask(GET_UID, &Parcel::readInt32);
}

int64_t BpMediaCodecLoggerClient::getBufferCountSinceLastFlush() {
    return ask(GET_BUFFER_COUNT_SINCE_LAST_FLUSH, &Parcel::readInt64);
}

bool BpMediaCodecLoggerClient::isVideoClientUsingSecureMem() {
    return ask(IS_VIDEO_CLIENT_USING_SECURE_MEM, &Parcel::readBool);
}

String8 BpMediaCodecLoggerClient::getClientCodecFormat() {
    return ask(GET_CLIENT_CODEC_FORMAT, &Parcel::readString8);
}

String8 BnMediaCodecLoggerClient::getClientHDRType() {
    return String8();
}

int32_t BnMediaCodecLoggerClient::getClientBitDepth() {
    return 0;
}

String8 BnMediaCodecLoggerClient::getClientScanType() {
    return String8();
}

status_t BnMediaCodecLoggerClient::onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                              uint32_t flags) {
    const Answer answer = code >= GET_STATUS && code <= GET_CLIENT_CODEC_FORMAT
                                  ? kAnswers[code - GET_STATUS]
                                  : nullptr;
    if (answer == nullptr) return BBinder::onTransact(code, data, reply, flags);
    CHECK_INTERFACE(IMediaCodecLoggerClient, data, reply);
    answer(*this, reply);
    return NO_ERROR;
}

}  // namespace android
