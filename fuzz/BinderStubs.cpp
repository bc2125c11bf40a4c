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
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>
#include <tests/binder/FakeServices.h>
#include <tests/support/FakeClock.h>
#include <tests/support/LogCapture.h>
#include <tests/support/LoggerServices.h>

using namespace android;

namespace {

using GeneratedService = test::FakeObserverService<media::BnMediaCodecLoggerService,
                                                   media::IMediaCodecLoggerListener>;

/** Keeps whatever registers as a client, and asks it. */
struct CodecService : test::FakeCodecService {
    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override {
        test::FakeCodecService::registerClient(id, client);
        if (client == nullptr) return;
        int width = 0, height = 0;
        client->getStatus();
        client->getClientResolution(width, height);
        client->getUid();
    }
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override {
        FUZZ_CHECK(packageName != nullptr);
        return test::FakeCodecService::isInMitigateFrameDropAllowlist(packageName);
    }
};

/** Notifies the listener that registered in the last call. */
template <typename Service>
void notify(Service& service) {
    const auto listener = std::exchange(service.lastListener, nullptr);
    if (listener == nullptr) return;
    listener->notifyFirstFrameRendered(1);
    listener->notifyOutBufferAvailableAfterDelay(1, 2);
}

struct Stubs {
    sp<CodecService> service = new CodecService;
    sp<GeneratedService> generated = new GeneratedService;
    sp<test::FakeListener> listener = new test::FakeListener;

    /** Whether an implementation was reached since the last question. */
    bool wereReached() {
        return service->takeCalls().size() + generated->takeCalls().size() +
                       listener->takeCalls().size() >
               0;
    }
};

void call(fuzz::Bytes& in, Stubs& stubs, const std::vector<sp<IBinder>>& objects) {
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
    Parcel reply;
    const status_t status = stub->transact(code, data, &reply, bits >> 2);
    FUZZ_CHECK(!stubs.wereReached() || knowsInterface, "reached without the interface token\n");
    FUZZ_CHECK(knowsInterface || status != OK || code > IBinder::LAST_CALL_TRANSACTION,
               "code %u is answered without the interface token\n", code);
    notify(*stubs.service);
    notify(*stubs.generated);
    stubs.wereReached();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static test::LogCapture& log = *new test::LogCapture;
    const test::FakeClock clock(1000);
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(1, 2);
    logger->configure("c2.vendor", "audio/raw", 0, true, 0, 0, nullptr, true);
    Stubs stubs;
    const auto& [service, generated, listener] = stubs;
    test::OneServiceManager::instance().setService(service);
    logger->profileP2End();
    stubs.wereReached();
    {
        const sp<IBinder> client = IInterface::asBinder(service->client());
        const std::vector<sp<IBinder>> objects = {client, service, generated, listener,
                                                  new BBinder};
        fuzz::Bytes in(data, size);
        while (!in.atEnd()) call(in, stubs, objects);
    }
    test::OneServiceManager::instance().setService(nullptr);
    service->registerClient(0, nullptr);
    FUZZ_CHECK(service->getStrongCount() == 2, "the logger and this hold it\n");
    FUZZ_CHECK(generated->getStrongCount() == 1);
    FUZZ_CHECK(listener->getStrongCount() == 1);
    FUZZ_CHECK(logger->getStrongCount() == 1);
    log.take();
    return 0;
}
