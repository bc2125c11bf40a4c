// SPDX-License-Identifier: Apache-2.0
// Sequences of calls to the stubs of client, hand-written service, generated-manner service and
// listener: any code, flags and bytes, with the right interface token in about half of the calls,
// because most code lies behind it, and with real objects in some.
//
// A call: u8 stub and object, u8 or u32 code, u8 flags and token, text, object, text.
#include "Fuzz.h"

#include <limits>
#include <memory>
#include <vector>

#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>
#include <tests/support/FakeClock.h>
#include <tests/support/LogCapture.h>
#include <tests/support/LoggerServices.h>

using namespace android;

namespace {

/** How often an implementation was reached. */
int gReached = 0;

size_t touch(const char* text) {
    return text != nullptr ? strlen(text) : 0;
}

/** The methods that both forms of the service have; reads whatever it is given. */
template <typename Stub, typename Listener>
struct ObserverService : Stub {
    std::vector<sp<Listener>> listeners;
    binder::Status status;

    binder::Status registerListener(const sp<Listener>& listener, int64_t* result) override {
        ++gReached;
        if (listener != nullptr) {
            listener->notifyFirstFrameRendered(1);
            listener->notifyOutBufferAvailableAfterDelay(1, 2);
            listeners.push_back(listener);
        }
        *result = static_cast<int64_t>(listeners.size());
        return status;
    }
    binder::Status unregisterListener(int64_t id) override {
        ++gReached;
        if (id > 0 && static_cast<uint64_t>(id) <= listeners.size()) listeners[id - 1] = nullptr;
        return status;
    }
    binder::Status getActiveVideoClients(std::vector<int64_t>* result) override {
        ++gReached;
        result->assign(3, INT64_MIN);
        return status;
    }
    binder::Status getTimeSinceLastFrameRendered(int64_t id, int64_t* result) override {
        return answer(id, result);
    }
    binder::Status getUid(int64_t id, int32_t* result) override { return answer(id, result); }
    binder::Status getBufferCountSinceLastFlush(int64_t id, int64_t* result) override {
        return answer(id, result);
    }
    binder::Status isVideoClientUsingSecureMem(int64_t id, bool* result) override {
        return answer(id, result);
    }
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override {
        ++gReached;
        size_t size = text != nullptr ? touch(text->c_str()) : 0;
        for (const auto& list : {listA, listB}) {
            for (const std::string& name : list) size += touch(name.c_str());
        }
        return size > 1000 ? binder::Status::fromExceptionCode(binder::Status::EX_SECURITY)
                           : status;
    }

    template <typename T>
    binder::Status answer(int64_t id, T* result) {
        ++gReached;
        *result = static_cast<T>(id);
        return id < 0 ? binder::Status::fromExceptionCode(binder::Status::EX_ILLEGAL_ARGUMENT)
                      : status;
    }
};

using GeneratedService =
        ObserverService<media::BnMediaCodecLoggerService, media::IMediaCodecLoggerListener>;

struct CodecService : ObserverService<BnMediaCodecLoggerService, media::IMediaCodecLoggerListener> {
    sp<IMediaCodecLoggerClient> client;

    void registerClient(int64_t, const sp<IMediaCodecLoggerClient>& registered) override {
        ++gReached;
        client = registered;
        if (client == nullptr) return;
        int width = 0, height = 0;
        client->getStatus();
        client->getClientResolution(width, height);
        client->getUid();
    }
    void unregisterClient(int64_t) override { ++gReached; }
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override {
        ++gReached;
        id = 7;
        return client;
    }
    void updateHidlMediaMetrics(const char* first, const char* second, const bool&,
                                const bool& flagB) override {
        ++gReached;
        touch(first);
        touch(second);
        FUZZ_CHECK(flagB == (first == nullptr) && flagB == (second == nullptr));
    }
    void onFirstFrameRendered(int64_t) override { ++gReached; }
    void onOutBufferAvailableAfterDelay(int64_t, int64_t) override { ++gReached; }
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override {
        ++gReached;
        FUZZ_CHECK(packageName != nullptr);
        return static_cast<int32_t>(touch(packageName));
    }
    String8 getOldestAudioClientCodec() override {
        ++gReached;
        return String8("aac");
    }
};

struct Listener : media::BnMediaCodecLoggerListener {
    binder::Status reached() {
        ++gReached;
        return binder::Status::fromStatusT(FAILED_TRANSACTION);
    }
    binder::Status notifyFirstFrameRendered(int64_t) override { return reached(); }
    binder::Status notifyOutBufferAvailableAfterDelay(int64_t, int64_t) override {
        return reached();
    }
    binder::Status notifyVideoClientUnregistered(int32_t) override { return reached(); }
};

void call(fuzz::Bytes& in, const std::vector<sp<IBinder>>& objects) {
    const uint8_t which = in.byte();
    const sp<IBinder>& stub = objects[which % 4];
    uint32_t code = in.byte();
    if (code >= 0x80) code = in.number<uint32_t>();
    const uint8_t bits = in.byte();

    Parcel data;
    if ((bits & 1) != 0) data.writeInterfaceToken(stub->getInterfaceDescriptor());
    std::string_view text = in.text();
    data.write(text.data(), text.size());
    if ((bits & 2) != 0) {
        // Any of the objects, or null.
        const size_t object = (which >> 2) % (objects.size() + 1);
        data.writeStrongBinder(object < objects.size() ? objects[object] : nullptr);
    }
    text = in.text();
    data.write(text.data(), text.size());

    data.setDataPosition(0);
    const bool knowsInterface = data.checkInterface(stub.get());
    data.setDataPosition(0);
    gReached = 0;
    Parcel reply;
    const status_t status = stub->transact(code, data, &reply, bits >> 2);
    FUZZ_CHECK(knowsInterface || gReached == 0, "reached without the interface token\n");
    FUZZ_CHECK(knowsInterface || status != OK || code > IBinder::LAST_CALL_TRANSACTION,
               "code %u is answered without the interface token\n", code);
    FUZZ_CHECK(heldLocks() == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static test::LogCapture& log = *new test::LogCapture;
    const test::FakeClock clock(1000);
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(1, 2);
    logger->configure("c2.vendor", "audio/raw", 0, true, 0, 0, nullptr, true);
    const sp<CodecService> service = new CodecService;
    test::OneServiceManager::instance().setService(service);
    logger->profileP2End();
    const sp<GeneratedService> generated = new GeneratedService;
    const sp<Listener> listener = new Listener;
    {
        const sp<IBinder> client = IInterface::asBinder(service->client);
        const std::vector<sp<IBinder>> objects = {client, service, generated, listener,
                                                  new BBinder};
        fuzz::Bytes in(data, size);
        while (!in.atEnd()) call(in, objects);
    }
    test::OneServiceManager::instance().setService(nullptr);
    service->client = nullptr;
    service->listeners.clear();  // among them may be the service itself
    generated->listeners.clear();
    FUZZ_CHECK(service->getStrongCount() == 2, "the logger and this hold it\n");
    FUZZ_CHECK(generated->getStrongCount() == 1);
    FUZZ_CHECK(listener->getStrongCount() == 1);
    FUZZ_CHECK(logger->getStrongCount() == 1);
    log.take();
    return 0;
}
