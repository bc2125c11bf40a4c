// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

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
    DeadPeerTest() { ProcessState::self()->startThreadPool(); }

    PeerProcess mPeer{"test.mortal"};
    const sp<IBinder> mRemote = mPeer.service();
};

TEST_F(DeadPeerTest, whenAPeerDies_callsUnderWayFailAndAllItsObjectsAreDead) {
    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kMake, &reply));
    const sp<IBinder> made = reply.readStrongBinder();
    const sp<Recipient> recipient = new Recipient();
    EXPECT_EQ(OK, made->linkToDeath(recipient));
    std::vector<std::thread> threads;
    std::atomic<int> failed(0);
    for (int i = 0; i < 8; i++) {
        threads.emplace_back([&] {
            if (callInt(mRemote, kSleep, 60 * 1000) == DEAD_OBJECT) failed++;
        });
    }
    usleep(100 * 1000);
    EXPECT_EQ(DEAD_OBJECT, callInt(mRemote, kExit));
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(8, failed);
    EXPECT_EQ(DEAD_OBJECT, mRemote->pingBinder());
    EXPECT_EQ(DEAD_OBJECT, callTest(mRemote, kAppend, nullptr, nullptr, IBinder::FLAG_ONEWAY));
    EXPECT_TRUE(eventually([&] { return recipient->deaths == 1; }));
    EXPECT_EQ(DEAD_OBJECT, callInt(made, kEcho));
}

TEST_F(DeadPeerTest, recipientsAreToldOnce) {
    const sp<Recipient> twice = new Recipient();
    const sp<Recipient> unlinked = new Recipient();
    const sp<Recipient> byCookie = new Recipient();
    sp<Recipient> gone = new Recipient();
    int cookie = 0;
    EXPECT_EQ(OK, mRemote->linkToDeath(twice));
    EXPECT_EQ(OK, mRemote->linkToDeath(twice, &cookie));
    EXPECT_EQ(OK, mRemote->linkToDeath(unlinked));
    EXPECT_EQ(OK, mRemote->linkToDeath(byCookie, &cookie, 1));
    EXPECT_EQ(OK, mRemote->linkToDeath(gone));
    wp<IBinder::DeathRecipient> found;
    EXPECT_EQ(OK, mRemote->unlinkToDeath(unlinked));
    EXPECT_EQ(NAME_NOT_FOUND, mRemote->unlinkToDeath(unlinked));
    EXPECT_EQ(NAME_NOT_FOUND, mRemote->unlinkToDeath(byCookie, &cookie, 0));
    EXPECT_EQ(OK, mRemote->unlinkToDeath(nullptr, &cookie, 1, &found));
    EXPECT_TRUE(found == byCookie);
    gone.clear();

    mPeer.kill();
    EXPECT_TRUE(eventually([&] { return twice->deaths == 2; }));
    EXPECT_EQ(mRemote.get(), twice->lastDead);
    callInt(mRemote, kEcho);
    usleep(50 * 1000);
    EXPECT_EQ(2, twice->deaths) << "once for each link";
    EXPECT_EQ(0, unlinked->deaths);
    EXPECT_EQ(0, byCookie->deaths);
    EXPECT_EQ(DEAD_OBJECT, mRemote->linkToDeath(twice));
    EXPECT_EQ(DEAD_OBJECT, mRemote->unlinkToDeath(twice));
}

TEST_F(DeadPeerTest, aRecipientMayCallOtherProcesses) {
    class Asking : public IBinder::DeathRecipient {
      public:
        void binderDied(const wp<IBinder>&) override { answer = callInt(other, kEcho, 5); }
        sp<IBinder> other;
        std::atomic<int> answer{0};
    };
    PeerProcess other("test.survivor");
    const sp<Asking> asking = new Asking();
    asking->other = other.service();
    EXPECT_EQ(OK, mRemote->linkToDeath(asking));
    mPeer.kill();
    EXPECT_TRUE(eventually([&] { return asking->answer == 5; }));
}

TEST_F(DeadPeerTest, aDeadServiceIsNotFoundAndItsSuccessorIs) {
    mPeer.kill();
    const sp<IServiceManager> manager = defaultServiceManager();
    const String16 name("test.mortal");
    EXPECT_EQ(nullptr, manager->getService(name));
    const Vector<String16> names = manager->listServices();
    EXPECT_THAT(std::vector<String16>(names.begin(), names.end()),
                ::testing::Not(::testing::Contains(name)));

    PeerProcess successor("test.mortal");
    const sp<IBinder> next = manager->getService(name);
    ASSERT_NE(nullptr, next);
    EXPECT_EQ(4, callInt(next, kEcho, 4));
    EXPECT_EQ(DEAD_OBJECT, callInt(mRemote, kEcho, 4)) << "the old object stays dead";

    PeerProcess usurper("test.mortal");
    Parcel reply;
    ASSERT_EQ(OK, callTest(manager->getService(name), kIdentify, &reply));
    EXPECT_EQ(usurper.pid(), reply.readInt32()) << "the last to take a name has it";
    EXPECT_EQ(4, callInt(next, kEcho, 4));
    usurper.leave();
    EXPECT_EQ(nullptr, manager->getService(name));
}

TEST_F(DeadPeerTest, deadPeersLeaveNoDescriptors) {
    const auto descriptors = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    EXPECT_EQ(OK, callTest(mRemote, kKeep, nullptr, arguments(new TestService())));
    const auto before = descriptors();
    std::vector<sp<IBinder>> kept;
    for (int i = 0; i < 3; i++) {
        PeerProcess peer("test.brief");
        kept.push_back(peer.service());
        EXPECT_EQ(OK, callTest(kept.back(), kKeep, nullptr, arguments(new TestService())));
    }
    EXPECT_TRUE(eventually([&] { return descriptors() <= before; }));
}

TEST_F(DeadPeerTest, aPeerThatOnlyPausesIsNotDead) {
    const sp<Recipient> recipient = new Recipient();
    EXPECT_EQ(OK, mRemote->linkToDeath(recipient));
    kill(mPeer.pid(), SIGSTOP);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 4; i++) {
        const auto large = [](Parcel& p) { p.setDataSize(100 * 1024); };
        EXPECT_EQ(OK, callTest(mRemote, kAppend, nullptr, large, IBinder::FLAG_ONEWAY));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2))
            << "a one-way call does not wait for its receiver";
    std::thread resumer([this] {
        usleep(200 * 1000);
        kill(mPeer.pid(), SIGCONT);
    });
    EXPECT_EQ(6, callInt(mRemote, kEcho, 6));
    resumer.join();
    EXPECT_EQ(0, recipient->deaths);
}

}  // namespace
}  // namespace android::test
