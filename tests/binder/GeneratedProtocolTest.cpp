// SPDX-License-Identifier: Apache-2.0
// The interfaces of observers: our form and the generator's exchange every call in all four
// combinations, with the same bytes; and both keep the generator's rules when a call fails.
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>
#include <tests/binder/FakeServices.h>

// As android::generated instead of android::media, so that it can stand beside ours.
#define media generated
#include <android/media/BnMediaCodecLoggerListener.h>
#include <android/media/BnMediaCodecLoggerService.h>
#include <android/media/BpMediaCodecLoggerListener.h>
#include <android/media/BpMediaCodecLoggerService.h>
#undef media

namespace android::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/** The classes of one form. */
#define FORM(name, space)                                                                    \
    struct name {                                                                            \
        using Service = space::IMediaCodecLoggerService;                                     \
        using ServiceDefault = space::IMediaCodecLoggerServiceDefault;                       \
        using Listener = space::IMediaCodecLoggerListener;                                   \
        using ListenerDefault = space::IMediaCodecLoggerListenerDefault;                     \
        using ListenerProxy = space::BpMediaCodecLoggerListener;                             \
        using FakeService = FakeObserverService<space::BnMediaCodecLoggerService, Listener>; \
        using FakeListener = FakeListenerOf<space::BnMediaCodecLoggerListener>;              \
    }
FORM(ByHand, media);
FORM(Generated, generated);

template <typename Listener>
struct ListenerCall {
    uint32_t code;
    const char* arguments;
    const char* received;
    std::function<binder::Status(Listener&)> call;
};

template <typename Form>
std::vector<ListenerCall<typename Form::Listener>> listenerCalls() {
    return {
            {1, ID, "notifyFirstFrameRendered(139637976732212)",
             [](auto& listener) { return listener.notifyFirstFrameRendered(kId); }},
            {2, ID " e8030000 00000000",
             "notifyOutBufferAvailableAfterDelay(139637976732212, 1000)",
             [](auto& listener) { return listener.notifyOutBufferAvailableAfterDelay(kId, 1000); }},
            {3, " ffffffff", "notifyVideoClientUnregistered(-1)",
             [](auto& listener) { return listener.notifyVideoClientUnregistered(-1); }},
    };
}

template <typename Caller, typename Callee>
void exchangeServiceCalls() {
    const sp<typename Callee::FakeService> service = new typename Callee::FakeService;
    const sp<Boundary> boundary = new Boundary(service);
    const sp<typename Caller::Service> proxy = Caller::Service::asInterface(boundary);
    for (const auto& call : serviceCalls<Caller>()) {
        expectBytes(call, *proxy, *boundary, *service);
    }
    // The listener that was registered is one that can be called.
    ASSERT_NE(service->lastListener, nullptr);
    EXPECT_TRUE(service->lastListener->notifyFirstFrameRendered(1).isOk());
}

template <typename Caller, typename Callee>
void exchangeListenerCalls() {
    const sp<typename Callee::FakeListener> listener = new typename Callee::FakeListener;
    const sp<Boundary> boundary = new Boundary(listener);
    const sp<typename Caller::Listener> proxy = Caller::Listener::asInterface(boundary);
    for (const auto& [code, arguments, received, call] : listenerCalls<Caller>()) {
        SCOPED_TRACE(received);
        EXPECT_TRUE(call(*proxy).isOk());
        EXPECT_EQ(boundary->last().code, code);
        EXPECT_EQ(boundary->last().flags, 1u);
        EXPECT_EQ(boundary->last().request, std::string(LISTENER_TOKEN) + arguments);
        EXPECT_THAT(listener->takeCalls(), ElementsAre(received));
        // What a one-way method returns has nowhere to go.
        listener->status = binder::Status::fromStatusT(NO_MEMORY);
    }
}

template <typename Form>
class GeneratedProtocol : public testing::Test {};
using Forms = testing::Types<ByHand, Generated>;

TYPED_TEST_SUITE(GeneratedProtocol, Forms);

}  // namespace

TYPED_TEST(GeneratedProtocol, callerOfThisForm_isUnderstoodByBothStubs) {
    exchangeServiceCalls<TypeParam, ByHand>();
    exchangeServiceCalls<TypeParam, Generated>();
    exchangeListenerCalls<TypeParam, ByHand>();
    exchangeListenerCalls<TypeParam, Generated>();
}

TYPED_TEST(GeneratedProtocol, badRequest_reachesNoMethod) {
    const sp<typename TypeParam::FakeService> service = new typename TypeParam::FakeService;
    const sp<typename TypeParam::FakeListener> listener = new typename TypeParam::FakeListener;
    const struct {
        sp<IBinder> stub;
        uint32_t code;
        const char* request;
        status_t result;
        const char* reply;
    } kRequests[] = {
            {service, 10, CLIENT_TOKEN ID, BAD_TYPE, ""},
            {service, 10, SERVICE_TOKEN, NOT_ENOUGH_DATA, ""},
            {service, 7, SERVICE_TOKEN, BAD_TYPE, ""},
            {service, 7, SERVICE_TOKEN " " NULL_BINDER, OK, EX_NULL_POINTER_REPLY},
            {service, 14, SERVICE_TOKEN " ffffffff ffffffff 00000000", OK, EX_NULL_POINTER_REPLY},
            {service, 14, SERVICE_TOKEN " ffffffff 01000000 ffffffff 00000000", OK,
             EX_NULL_POINTER_REPLY},
            {service, 8, SERVICE_TOKEN, NOT_ENOUGH_DATA, ""},
            {service, 6, SERVICE_TOKEN ID, UNKNOWN_TRANSACTION, ""},
            {service, 15, SERVICE_TOKEN ID, UNKNOWN_TRANSACTION, ""},
            {listener, 1, SERVICE_TOKEN ID, BAD_TYPE, ""},
            {listener, 1, LISTENER_TOKEN, NOT_ENOUGH_DATA, ""},
            {listener, 2, LISTENER_TOKEN ID, NOT_ENOUGH_DATA, ""},
            {listener, 3, LISTENER_TOKEN, NOT_ENOUGH_DATA, ""},
            {listener, 0, LISTENER_TOKEN ID, UNKNOWN_TRANSACTION, ""},
            {listener, 4, LISTENER_TOKEN ID, UNKNOWN_TRANSACTION, ""},
    };
    for (const auto& [stub, code, request, result, reply] : kRequests) {
        const Transaction sent = sendRaw(stub, code, request);
        EXPECT_EQ(sent.result, result) << code << " " << request;
        EXPECT_EQ(sent.reply, reply) << code << " " << request;
    }
    EXPECT_THAT(service->takeCalls(), IsEmpty());
    EXPECT_THAT(listener->takeCalls(), IsEmpty());
}

TYPED_TEST(GeneratedProtocol, badReply_leavesTheOutValueAlone) {
    const struct {
        uint32_t code;
        status_t result;
        const char* reply;
        const char* outcome;
    } kReplies[] = {
            {7, DEAD_OBJECT, "", "failed -32 5"},
            {10, OK, "", "failed -61 5"},
            {10, OK, "00000000", "failed -61 5"},
            {10, OK, "fcffffff", "failed -2147483640 5"},
            {10, OK, "80ffffff 04000000 2c000000 00000000", "ok 44"},
            {9, OK, "00000000 ffffffff", "failed -2147483640 { 5 }"},
            {8, OK, EX_NULL_POINTER_REPLY, "ok"},
            {14, OK, EX_NULL_POINTER_REPLY, "-4 "},
    };
    for (const auto& [code, result, reply, outcome] : kReplies) {
        const sp<typename TypeParam::Service> proxy =
                TypeParam::Service::asInterface(new CannedPeer(result, reply));
        for (const auto& call : serviceCalls<TypeParam>()) {
            if (call.code != code) continue;
            EXPECT_EQ(call.call(*proxy), outcome) << code << " " << result << " " << reply;
        }
    }
}

// Only the answer "unknown" leads to the default implementation; it stays for the whole process.
TYPED_TEST(GeneratedProtocol, serviceThatPredatesACall_isReplacedByTheDefault) {
    using Service = typename TypeParam::Service;
    EXPECT_FALSE(Service::setDefaultImpl(nullptr));
    ASSERT_EQ(Service::getDefaultImpl(), nullptr);
    const sp<Service> old = Service::asInterface(new CannedPeer(UNKNOWN_TRANSACTION));
    const sp<Service> dead = Service::asInterface(new CannedPeer(DEAD_OBJECT));
    auto implementation = std::make_unique<typename TypeParam::FakeService>();
    typename TypeParam::FakeService* const service = implementation.get();
    ASSERT_TRUE(Service::setDefaultImpl(std::move(implementation)));
    const sp<Service> base = new typename TypeParam::ServiceDefault;
    for (const auto& call : serviceCalls<TypeParam>()) {
        SCOPED_TRACE(call.received);
        std::string received = call.received;
        // The default implementation gets the caller's own out-value, 5 or false.
        if (received.find(" 0)") != std::string::npos) received.rbegin()[1] = '5';
        EXPECT_EQ(call.call(*old), call.result);
        EXPECT_THAT(service->takeCalls(), ElementsAre(received));
        call.call(*dead);
        EXPECT_THAT(call.call(*base), testing::StartsWith("failed -74"));
        EXPECT_THAT(service->takeCalls(), IsEmpty());
    }
}

TYPED_TEST(GeneratedProtocol, listenerThatPredatesACall_isReplacedByTheDefault) {
    using Listener = typename TypeParam::Listener;
    EXPECT_FALSE(Listener::setDefaultImpl(nullptr));
    EXPECT_EQ(Listener::asInterface(nullptr), nullptr);
    const sp<Listener> old = Listener::asInterface(new CannedPeer(UNKNOWN_TRANSACTION));
    auto implementation = std::make_unique<typename TypeParam::FakeListener>();
    typename TypeParam::FakeListener* const listener = implementation.get();
    ASSERT_TRUE(Listener::setDefaultImpl(std::move(implementation)));
    // Who derives a default from this base and implements one call leaves the others as they were.
    const sp<Listener> base = new typename TypeParam::ListenerDefault;
    for (const auto& call : listenerCalls<TypeParam>()) {
        EXPECT_TRUE(call.call(*old).isOk()) << call.received;
        EXPECT_THAT(listener->takeCalls(), ElementsAre(call.received));
        EXPECT_EQ(call.call(*base).transactionError(), UNKNOWN_TRANSACTION) << call.received;
    }
}

// The generator's code makes room for as many as are announced before it looks for the first.
TEST(HandWrittenProtocol, listThatAnnouncesMoreThanThereIs_isTooShort) {
    std::vector<int64_t> ids{5};
    const sp<IBinder> peer = new CannedPeer(OK, "00000000 ffff0f00 01000000 00000000");
    const sp<media::IMediaCodecLoggerService> service =
            media::IMediaCodecLoggerService::asInterface(peer);
    EXPECT_EQ(textOf(service->getActiveVideoClients(&ids)), "failed -61");
    EXPECT_EQ(testing::PrintToString(ids), "{ 5 }");
    const sp<IBinder> stub = new ByHand::FakeService;
    EXPECT_EQ(sendRaw(stub, 14, SERVICE_TOKEN " ffffffff ffff0f00 ffffffff").result,
              NOT_ENOUGH_DATA);
}

}  // namespace android::test
