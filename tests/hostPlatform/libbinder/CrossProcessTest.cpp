// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <binder/Stability.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "hostPlatform/libbinder/transport/Message.h"
#include "tests/hostPlatform/libbinder/PeerProcess.h"

namespace android::test {
namespace {

constexpr uint32_t kRemoteFlags = 0x10;
constexpr size_t kLimit = transport::kMaxParcelSize;

class CrossProcessTest : public ::testing::Test {
  protected:
    CrossProcessTest() { ProcessState::self()->startThreadPool(); }

    PeerProcess mPeer{"test.service"};
    const sp<IBinder> mRemote = mPeer.service();
};

sp<IBinder> callBinder(const sp<IBinder>& target, uint32_t code,
                       const std::function<void(Parcel&)>& arguments = nullptr) {
    Parcel reply;
    EXPECT_EQ(OK, callTest(target, code, &reply, arguments));
    return reply.readStrongBinder();
}

std::vector<int64_t> listOf(const sp<IBinder>& target) {
    Parcel reply;
    std::vector<int64_t> list;
    if (callTest(target, kList, &reply) == OK) reply.readInt64Vector(&list);
    return list;
}

void append(const sp<IBinder>& target, int32_t value, int32_t ms = 0) {
    EXPECT_EQ(OK, callTest(target, kAppend, nullptr, arguments(value, ms), IBinder::FLAG_ONEWAY));
}

TEST_F(CrossProcessTest, aCallIsServedThereForThisProcess) {
    EXPECT_EQ(nullptr, mRemote->localBinder());
    EXPECT_NE(nullptr, mRemote->remoteBinder());
    EXPECT_TRUE(mRemote->isBinderAlive());
    EXPECT_EQ(OK, mRemote->pingBinder());
    EXPECT_EQ(String16("test.ITestService"), mRemote->getInterfaceDescriptor());
    EXPECT_EQ(7, callInt(mRemote, kEcho, 7));

    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kIdentify, &reply));
    EXPECT_EQ(mPeer.pid(), reply.readInt32());
    EXPECT_EQ(getpid(), reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(getuid()), reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(kRemoteFlags), reply.readInt32());
    pid_t pid = 0;
    EXPECT_EQ(OK, mRemote->getDebugPid(&pid));
    EXPECT_EQ(mPeer.pid(), pid);
}

TEST_F(CrossProcessTest, aFailedCallLeavesTheReplyEmpty) {
    Parcel reply;
    EXPECT_EQ(UNKNOWN_TRANSACTION, callTest(mRemote, 1000, &reply));
    EXPECT_EQ(OK, callTest(mRemote, kFail, &reply, arguments(5)));
    EXPECT_EQ(42, reply.readInt32()) << "a positive result is none";
    for (const status_t status : {PERMISSION_DENIED, UNKNOWN_ERROR, DEAD_OBJECT}) {
        Parcel failed;
        EXPECT_EQ(status, callTest(mRemote, kFail, &failed, arguments(status)));
        EXPECT_EQ(0u, failed.dataSize());
        // As on a device, a proxy takes this result for the death of its object.
        EXPECT_EQ(status != DEAD_OBJECT, mRemote->isBinderAlive());
    }
}

TEST_F(CrossProcessTest, whatIsTooLargeIsRefusedAndHarmsNothing) {
    const auto bytes = [](size_t size) { return [size](Parcel& p) { p.setDataSize(size); }; };
    EXPECT_EQ(OK, callTest(mRemote, kEcho, nullptr, bytes(kLimit)));
    EXPECT_EQ(FAILED_TRANSACTION, callTest(mRemote, kEcho, nullptr, bytes(kLimit + 4)));
    EXPECT_EQ(FAILED_TRANSACTION,
              callTest(mRemote, kAppend, nullptr, bytes(kLimit), IBinder::FLAG_ONEWAY));
    Parcel reply;
    EXPECT_EQ(FAILED_TRANSACTION, callInt(mRemote, kReplySize, kLimit + 4));
    EXPECT_EQ(0x78787878, callInt(mRemote, kReplySize, kLimit));
}

TEST_F(CrossProcessTest, objectsPassBothWaysAndKeepTheirIdentity) {
    const sp<IBinder> local = new TestService();
    EXPECT_EQ(local, callBinder(mRemote, kPass, arguments(local)));
    EXPECT_EQ(mRemote, callBinder(mRemote, kPass, arguments(mRemote)));
    EXPECT_EQ(nullptr, callBinder(mRemote, kPass, arguments(nullptr)));

    const sp<IBinder> made = callBinder(mRemote, kMake);
    ASSERT_NE(nullptr, made);
    EXPECT_NE(mRemote, made);
    EXPECT_EQ(made, callBinder(mRemote, kPass, arguments(made)));
    EXPECT_EQ(3, callInt(made, kEcho, 3));
    EXPECT_EQ(mRemote, mPeer.service());
}

TEST_F(CrossProcessTest, objectsLiveWhileAnyProcessHoldsThem) {
    const int before = TestService::alive();
    sp<IBinder> local = new TestService();
    callTest(mRemote, kKeep, nullptr, arguments(local));
    local.clear();
    EXPECT_EQ(before + 1, TestService::alive());
    EXPECT_EQ(8, callInt(callBinder(mRemote, kGiveBack), kEcho, 8));
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
    EXPECT_TRUE(eventually([&] { return TestService::alive() == before; }));

    callTest(mRemote, kKeep, nullptr, arguments(new TestService()), IBinder::FLAG_ONEWAY);
    EXPECT_TRUE(eventually([&] { return callBinder(mRemote, kGiveBack) != nullptr; }));
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
    EXPECT_TRUE(eventually([&] { return TestService::alive() == before; }));

    EXPECT_EQ(1, callInt(mRemote, kCount));
    sp<IBinder> made = callBinder(mRemote, kMake);
    EXPECT_EQ(2, callInt(mRemote, kCount));
    made.clear();
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));

    callTest(mRemote, kKeep, nullptr, arguments(new TestService()));
    EXPECT_EQ(before + 1, TestService::alive());
    mPeer.kill();
    EXPECT_TRUE(eventually([&] { return TestService::alive() == before; }));
}

TEST_F(CrossProcessTest, anObjectPassedOnIsCalledWithoutTheOneInBetween) {
    PeerProcess other("test.other");
    const sp<IBinder> second = other.service();
    sp<IBinder> made = callBinder(mRemote, kMake);
    callTest(second, kKeep, nullptr, arguments(made));
    made.clear();
    const sp<IBinder> back = callBinder(second, kGiveBack);
    Parcel reply;
    ASSERT_EQ(OK, callTest(second, kCall, &reply, arguments(back, kIdentify, 0)));
    EXPECT_EQ(mPeer.pid(), reply.readInt32());
    EXPECT_EQ(other.pid(), reply.readInt32()) << "the caller is the second peer itself";

    // What is passed on when its process has died is dead, but an object.
    mPeer.kill();
    EXPECT_TRUE(eventually([&] { return !back->isBinderAlive(); }));
    const sp<IBinder> dead = callBinder(second, kGiveBack);
    ASSERT_NE(nullptr, dead);
    EXPECT_EQ(DEAD_OBJECT, callInt(dead, kEcho));
}

TEST_F(CrossProcessTest, callsNestDeeperThanThereAreThreads) {
    const sp<TestService> local = new TestService();
    std::thread::id servedBy;
    local->onEcho = [&] { servedBy = std::this_thread::get_id(); };
    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kCall, &reply, arguments(local, kEcho, 6)));
    EXPECT_EQ(5, reply.readInt32());
    EXPECT_EQ(std::this_thread::get_id(), servedBy) << "by the thread that waits";

    Parcel deep;
    ASSERT_EQ(OK, callTest(mRemote, kCall, &deep, arguments(local, kCall, 100)));
    EXPECT_EQ(-1, deep.readInt32());
    EXPECT_EQ(getpid(), IPCThreadState::self()->getCallingPid());
}

TEST_F(CrossProcessTest, oneWayCallsKeepTheirOrderAndDoNotWait) {
    append(mRemote, 0, 300);
    for (int i = 1; i < 200; i++) append(mRemote, i);
    EXPECT_TRUE(listOf(mRemote).empty()) << "a two-way call overtakes them";
    const sp<IBinder> made = callBinder(mRemote, kMake);
    append(made, 9);
    EXPECT_TRUE(eventually([&] { return listOf(made).size() == 1; }));
    EXPECT_TRUE(listOf(mRemote).empty()) << "the order is that of one object, not of the process";

    ASSERT_TRUE(eventually([&] { return listOf(mRemote).size() == 200; }));
    const std::vector<int64_t> list = listOf(mRemote);
    for (size_t i = 0; i < list.size(); i++) EXPECT_EQ(static_cast<int64_t>(i), list[i]);
}

TEST_F(CrossProcessTest, whenAReceiverDoesNotKeepUp_oneWayCallsAreRefused) {
    append(mRemote, 0, 500);
    const auto large = [](Parcel& p) { p.setDataSize(100 * 1024); };
    status_t status = OK;
    for (int i = 0; i < 10 && status == OK; i++) {
        status = callTest(mRemote, kAppend, nullptr, large, IBinder::FLAG_ONEWAY);
    }
    EXPECT_EQ(FAILED_TRANSACTION, status);
    // What has been served makes room again.
    for (int i = 0; i < 20; i++) {
        const size_t served = listOf(mRemote).size();
        EXPECT_TRUE(eventually([&] {
            return callTest(mRemote, kAppend, nullptr, large, IBinder::FLAG_ONEWAY) == OK;
        }));
        EXPECT_TRUE(eventually([&] { return listOf(mRemote).size() > served; }));
    }
}

TEST_F(CrossProcessTest, manyThreadsCallAtOnce) {
    callTest(mRemote, kKeep, nullptr, arguments(callBinder(mRemote, kMake)));
    std::atomic<int> wrong(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 20; t++) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; i++) {
                if (callInt(mRemote, kEcho, t * 1000 + i) != t * 1000 + i) wrong++;
                const sp<IBinder> made = callBinder(mRemote, kMake);
                if (made == nullptr || callInt(made, kEcho, i) != i) wrong++;
                if (callInt(callBinder(mRemote, kGiveBack), kEcho, i) != i) wrong++;
                const sp<IBinder> local = new TestService();
                if (callBinder(mRemote, kPass, arguments(local)) != local) wrong++;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, wrong);
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));
}

TEST_F(CrossProcessTest, callsOfSeveralThreadsAreServedAtTheSameTime) {
    callInt(mRemote, kEcho);  // leaves a free thread there, which is to take one of the calls only
    const auto start = std::chrono::steady_clock::now();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; i++) threads.emplace_back([&] { callInt(mRemote, kSleep, 1000); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
}

TEST_F(CrossProcessTest, theStabilityOfAnObjectTravelsWithIt) {
    const sp<IBinder> vendor = new TestService();
    internal::Stability::markVndk(vendor.get());
    callTest(mRemote, kKeep, nullptr, arguments(vendor));
    // A call of a user code to a vendor object from here is not sent.
    Parcel reply;
    EXPECT_EQ(BAD_TYPE, callTest(mRemote, kCall, &reply, arguments(vendor, kEcho, 0)));
    EXPECT_EQ(vendor, callBinder(mRemote, kGiveBack));
}

TEST_F(CrossProcessTest, aThreadThatJoinsThePoolServesUntilTheProcessIsStopped) {
    PeerProcess peer("test.joined", "joined");
    EXPECT_EQ(5, callInt(peer.service(), kEcho, 5));
    peer.leave();
}

TEST_F(CrossProcessTest, bothSidesLeaveCleanlyWithConnectionsOpen) {
    callTest(mRemote, kKeep, nullptr, arguments(new TestService()));
    append(mRemote, 1, 100);
    mPeer.leave();
}

}  // namespace
}  // namespace android::test
