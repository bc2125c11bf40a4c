// SPDX-License-Identifier: Apache-2.0
// Binder between processes: calls, objects, and peers that die or do not keep to the protocol.
#include "tests/hostPlatform/libbinder/TestService.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>

#include <random>
#include <thread>

#include "hostPlatform/libbinder/transport/Message.h"
#include "hostPlatform/libbinder/transport/RuntimeDir.h"
#include "tests/hostPlatform/libbinder/RuntimeFolder.h"
#include "tests/support/Process.h"

namespace android::test {
namespace {

/** A binder_test_peer that serves; killed with this object. */
struct Peer {
    explicit Peer(const char* serviceName) : process({TEST_PEER, serviceName}) {
        EXPECT_TRUE(process.waitForOutput("ready")) << process.wait(0).err;
        service = defaultServiceManager()->getService(String16(serviceName));
        EXPECT_NE(nullptr, service);
    }
    void end(int signal, int exitCode) {
        process.signal(signal);
        const ProcessResult result = process.wait();
        EXPECT_EQ(exitCode, result.exitCode) << result.err;
    }

    Process process;
    sp<IBinder> service;
};

class CrossProcessTest : public ::testing::Test {
  protected:
    CrossProcessTest() { ProcessState::self()->startThreadPool(); }

    const RuntimeFolder mFolder;
    Peer mPeer{"test.service"};
    const sp<IBinder> mRemote = mPeer.service;
};

/** True once `condition` is; false if that takes twenty seconds. */
bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 2000; i++, usleep(10 * 1000)) {
        if (condition()) return true;
    }
    return false;
}

void write(Parcel& parcel, int32_t value) {
    parcel.writeInt32(value);
}
void write(Parcel& parcel, const sp<IBinder>& value) {
    parcel.writeStrongBinder(value);
}

/** Calls `code` with integers and objects; one-way where there is no place for a reply. */
template <typename... Values>
status_t call(const sp<IBinder>& target, uint32_t code, Parcel* reply, const Values&... values) {
    Parcel request;
    (write(request, values), ...);
    return target->transact(code, request, reply, reply == nullptr ? IBinder::FLAG_ONEWAY : 0);
}

/** The int32 that `code` answers, or the negative status. */
int32_t callInt(const sp<IBinder>& target, uint32_t code, int32_t argument = 0) {
    Parcel reply;
    const status_t status = call(target, code, &reply, argument);
    return status == OK ? reply.readInt32() : status;
}

template <typename... Values>
sp<IBinder> callBinder(const sp<IBinder>& target, uint32_t code, const Values&... values) {
    Parcel reply;
    EXPECT_EQ(OK, call(target, code, &reply, values...));
    return reply.readStrongBinder();
}

std::vector<int64_t> listOf(const sp<IBinder>& target) {
    Parcel reply;
    std::vector<int64_t> list;
    if (call(target, kList, &reply) == OK) reply.readInt64Vector(&list);
    return list;
}

TEST_F(CrossProcessTest, aCallIsServedThereForThisProcess) {
    EXPECT_EQ(nullptr, mRemote->localBinder());
    EXPECT_EQ(OK, mRemote->pingBinder());
    EXPECT_EQ(String16("test.ITestService"), mRemote->getInterfaceDescriptor());

    Parcel reply;
    ASSERT_EQ(OK, call(mRemote, kRelay, &reply, 0));
    EXPECT_EQ(mPeer.process.pid(), reply.readInt32());
    EXPECT_EQ(getpid(), reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(getuid()), reply.readInt32());

    EXPECT_EQ(42, callInt(mRemote, kFail, 5)) << "a positive result is none";
    for (const size_t size : {transport::kTransactionSpace, transport::kTransactionSpace + 4}) {
        Parcel request;
        request.setDataSize(size);
        EXPECT_EQ(size == transport::kTransactionSpace ? OK : FAILED_TRANSACTION,
                  mRemote->transact(kEcho, request, nullptr));
    }
    for (const status_t status : {PERMISSION_DENIED, UNKNOWN_ERROR, DEAD_OBJECT}) {
        Parcel failed;
        EXPECT_EQ(status, call(mRemote, kFail, &failed, status));
        EXPECT_EQ(0u, failed.dataSize());
        // As on a device, a proxy takes this result for the death of its object.
        EXPECT_EQ(status != DEAD_OBJECT, mRemote->isBinderAlive());
    }
}

TEST_F(CrossProcessTest, objectsKeepTheirIdentityAndLiveWhileAnyProcessHoldsThem) {
    sp<IBinder> local = new TestService();
    EXPECT_EQ(local, callBinder(mRemote, kPass, local));
    EXPECT_EQ(mRemote, callBinder(mRemote, kPass, mRemote));
    EXPECT_EQ(nullptr, callBinder(mRemote, kPass, sp<IBinder>()));
    EXPECT_EQ(mRemote, defaultServiceManager()->getService(String16("test.service")));

    callBinder(mRemote, kKeep, local);
    local.clear();
    EXPECT_EQ(1, TestService::alive);
    EXPECT_EQ(8, callInt(callBinder(mRemote, kKeep, sp<IBinder>()), kEcho, 8));
    EXPECT_TRUE(eventually([] { return TestService::alive == 0; }));

    sp<IBinder> made = callBinder(mRemote, kMake);
    EXPECT_NE(mRemote, made);
    EXPECT_EQ(made, callBinder(mRemote, kPass, made));
    EXPECT_EQ(3, callInt(made, kEcho, 3));
    EXPECT_EQ(2, callInt(mRemote, kCount));
    made.clear();
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));

    callBinder(mRemote, kKeep, sp<IBinder>(new TestService()));
    mPeer.end(SIGKILL, 128 + SIGKILL);
    EXPECT_TRUE(eventually([] { return TestService::alive == 0; }));
}

TEST_F(CrossProcessTest, callsNestOnTheThreadThatWaits) {
    const Peer other("test.other");
    const sp<TestService> service = new TestService();
    const sp<IBinder> local = service;
    std::thread::id servedBy;
    service->onRelayed = [&] { servedBy = std::this_thread::get_id(); };
    // Through a third process, which has no word of who waits for it but by its caller.
    Parcel reply;
    ASSERT_EQ(OK, call(mRemote, kRelay, &reply, 2, other.service, local));
    EXPECT_EQ(getpid(), reply.readInt32());
    EXPECT_EQ(other.process.pid(), reply.readInt32()) << "who was passed on to calls by itself";
    EXPECT_EQ(std::this_thread::get_id(), servedBy);

    // Deeper than there are threads.
    Parcel request;
    request.writeInt32(100);
    for (int i = 0; i < 100; i++) request.writeStrongBinder(i % 2 == 0 ? local : mRemote);
    ASSERT_EQ(OK, mRemote->transact(kRelay, request, &reply));
    EXPECT_EQ(getpid(), IPCThreadState::self()->getCallingPid());
}

TEST_F(CrossProcessTest, oneWayCallsKeepTheirOrderAndDoNotWait) {
    EXPECT_EQ(OK, call(mRemote, kBlock, nullptr));
    for (int i = 0; i < 200; i++) EXPECT_EQ(OK, call(mRemote, kAppend, nullptr, i));
    const sp<IBinder> made = callBinder(mRemote, kMake);
    EXPECT_EQ(OK, call(made, kAppend, nullptr, 9));
    EXPECT_TRUE(eventually([&] { return listOf(made).size() == 1; }));
    // Two-way calls overtake them, and the order is that of one object, not of the process.
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kBlocked) == 1; }));
    EXPECT_TRUE(listOf(mRemote).empty());
    EXPECT_EQ(OK, callInt(mRemote, kUnblock));
    ASSERT_TRUE(eventually([&] { return listOf(mRemote).size() == 200; }));
    const std::vector<int64_t> list = listOf(mRemote);
    // The first is the calling pid, which a one-way call does not tell: 0.
    for (size_t i = 0; i < list.size(); i++) EXPECT_EQ(static_cast<int64_t>(i), list[i]);
}

class Recipient : public IBinder::DeathRecipient {
  public:
    void binderDied(const wp<IBinder>& who) override {
        lastDead = who.unsafe_get();
        deaths++;
    }

    std::atomic<int> deaths{0};
    std::atomic<const void*> lastDead{nullptr};
};

TEST_F(CrossProcessTest, whenAPeerDies_callsUnderWayFailAndAllItsObjectsAreDead) {
    const sp<IBinder> linked = callBinder(mRemote, kMake);
    const sp<IBinder> other = callBinder(mRemote, kMake);
    const sp<Recipient> recipient = new Recipient(), unlinked = new Recipient(),
                        late = new Recipient();
    EXPECT_EQ(OK, linked->linkToDeath(recipient));
    EXPECT_EQ(NAME_NOT_FOUND, linked->unlinkToDeath(unlinked));
    EXPECT_EQ(OK, linked->linkToDeath(unlinked));
    EXPECT_EQ(OK, linked->unlinkToDeath(unlinked));
    std::atomic<int> failed(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; i++) {
        threads.emplace_back([&] { failed += callInt(mRemote, kBlock) == DEAD_OBJECT; });
    }
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kBlocked) == 8; }));
    mPeer.end(SIGKILL, 128 + SIGKILL);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(8, failed);
    EXPECT_EQ(DEAD_OBJECT, call(mRemote, kAppend, nullptr, 1));
    EXPECT_TRUE(eventually([&] { return recipient->deaths == 1; }));
    EXPECT_EQ(linked.get(), recipient->lastDead);
    EXPECT_FALSE(linked->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, linked->linkToDeath(late));
    EXPECT_EQ(DEAD_OBJECT, linked->unlinkToDeath(recipient));

    // Without a link the proxy learns of it by a call, or by the first link.
    EXPECT_TRUE(other->isBinderAlive());
    EXPECT_EQ(OK, other->linkToDeath(late));
    EXPECT_TRUE(eventually([&] { return late->deaths == 1; }));
    EXPECT_FALSE(other->isBinderAlive());

    const Peer successor("test.service");
    EXPECT_EQ(4, callInt(successor.service, kEcho, 4));
    EXPECT_EQ(DEAD_OBJECT, callInt(mRemote, kEcho, 4)) << "the old object stays dead";
    EXPECT_EQ(1, recipient->deaths);
    EXPECT_EQ(0, unlinked->deaths);
}

// A stranger gets no further than its own connection.
TEST_F(CrossProcessTest, whatIsNoMessageEndsTheConnectionAndHarmsNobody) {
    using namespace transport;
    const RuntimeDir dir;
    ObjectAddress address;
    ASSERT_TRUE(dir.find("test.service", &address));
    const auto bytesOf = [&](MessageKind kind) {
        Message message(kind, 1);
        message.version = kProtocolVersion;
        message.peer = {4711, 1};
        message.object = address.object;
        message.code = kKeep;
        message.payload.data.resize(28);
        message.payload.objects = {{0, {{7, 7}, 1}}};  // of a process that is not there
        return encodeMessage(message);
    };
    std::minstd_rand random(1);
    for (int round = 0; round < 200; round++) {
        const base::unique_fd socket = dir.connectTo(address.peer);
        std::vector<uint8_t> bytes;
        for (const MessageKind kind :
             {MessageKind::kHello, MessageKind::kAcquire, MessageKind::kCall,
              static_cast<MessageKind>(1 + random() % 9)}) {
            const std::vector<uint8_t> message = bytesOf(kind);
            bytes.insert(bytes.end(), message.begin(), message.end());
        }
        for (int i = 0; i < round % 4; i++) bytes[random() % bytes.size()] ^= 1 << random() % 8;
        send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    const base::unique_fd socket = dir.connectTo(address.peer);
    send(socket.get(), "GET / HTTP/1.1\r\n\r\n", 18, MSG_NOSIGNAL);
    EXPECT_TRUE(eventually([&] {
        uint8_t byte;
        return recv(socket.get(), &byte, 1, MSG_DONTWAIT) == 0;
    }));
    callBinder(mRemote, kKeep, sp<IBinder>());
    EXPECT_EQ(5, callInt(mRemote, kEcho, 5));
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));
    mPeer.end(SIGTERM, 0);  // in good order, with connections open
}

}  // namespace
}  // namespace android::test
