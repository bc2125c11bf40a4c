// SPDX-License-Identifier: Apache-2.0
// Peers that die or do not keep to the protocol.
#include <limits>
#include <memory>

#include <binder/ProcessState.h>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <random>
#include <thread>

#include "hostPlatform/libbinder/transport/RuntimeDir.h"
#include "tests/hostPlatform/libbinder/PeerProcess.h"

namespace android::test {
namespace {

class Recipient : public IBinder::DeathRecipient {
  public:
    void binderDied(const wp<IBinder>& who) override {
        lastDead = who.unsafe_get();
        deaths++;
    }

    std::atomic<int> deaths{0};
    std::atomic<const void*> lastDead{nullptr};
};

class DeadPeerTest : public ::testing::Test {
  protected:
    PeerProcess mPeer{"test.mortal"};
    const sp<IBinder> mRemote = mPeer.service();
};

TEST_F(DeadPeerTest, whenAPeerDies_callsUnderWayFailAndAllItsObjectsAreDead) {
    ProcessState::self()->startThreadPool();
    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kMake, &reply));
    const sp<IBinder> made = reply.readStrongBinder();
    const sp<Recipient> recipient = new Recipient();
    EXPECT_EQ(OK, made->linkToDeath(recipient));
    std::atomic<int> failed(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; i++) {
        threads.emplace_back([&] {
            if (callInt(mRemote, kSleep, 60 * 1000) == DEAD_OBJECT) failed++;
        });
    }
    usleep(100 * 1000);
    mPeer.kill();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(8, failed);
    EXPECT_EQ(DEAD_OBJECT, callTest(mRemote, kAppend, nullptr, nullptr, IBinder::FLAG_ONEWAY));
    EXPECT_TRUE(eventually([&] { return recipient->deaths == 1; }));
    EXPECT_FALSE(made->isBinderAlive());

    const PeerProcess successor("test.mortal");
    EXPECT_EQ(4, callInt(successor.service(), kEcho, 4));
    EXPECT_EQ(DEAD_OBJECT, callInt(mRemote, kEcho, 4)) << "the old object stays dead";
}

TEST_F(DeadPeerTest, recipientsAreToldOnce_andNotBeforeThereIsAThreadForIt) {
    const sp<Recipient> twice = new Recipient();
    const sp<Recipient> unlinked = new Recipient();
    const sp<Recipient> late = new Recipient();
    EXPECT_EQ(OK, mRemote->linkToDeath(twice));
    EXPECT_EQ(OK, mRemote->linkToDeath(twice));
    EXPECT_EQ(NAME_NOT_FOUND, mRemote->unlinkToDeath(unlinked));
    EXPECT_EQ(OK, mRemote->linkToDeath(unlinked));
    EXPECT_EQ(OK, mRemote->unlinkToDeath(unlinked));
    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kMake, &reply));
    const sp<IBinder> other = reply.readStrongBinder();

    mPeer.kill();
    usleep(200 * 1000);
    EXPECT_EQ(0, twice->deaths);
    EXPECT_TRUE(mRemote->isBinderAlive());
    ProcessState::self()->startThreadPool();
    EXPECT_TRUE(eventually([&] { return twice->deaths == 2; })) << "once for each link";
    EXPECT_EQ(mRemote.get(), twice->lastDead);
    EXPECT_EQ(DEAD_OBJECT, mRemote->linkToDeath(twice));
    EXPECT_EQ(DEAD_OBJECT, mRemote->unlinkToDeath(twice));

    // Without a link the proxy learns of it by a call, or by the first link.
    EXPECT_TRUE(other->isBinderAlive());
    EXPECT_EQ(OK, other->linkToDeath(late));
    EXPECT_TRUE(eventually([&] { return late->deaths == 1; }));
    EXPECT_FALSE(other->isBinderAlive());
    EXPECT_EQ(2, twice->deaths);
    EXPECT_EQ(0, unlinked->deaths);
}

// A stranger gets no further than its own connection.
TEST_F(DeadPeerTest, whatIsNoMessageEndsTheConnectionAndHarmsNobody) {
    using namespace transport;
    const RuntimeDir dir;
    ObjectAddress address;
    ASSERT_TRUE(dir.find("test.mortal", &address));
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
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
    EXPECT_EQ(5, callInt(mRemote, kEcho, 5));
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));
    mPeer.leave();
}

}  // namespace
}  // namespace android::test
