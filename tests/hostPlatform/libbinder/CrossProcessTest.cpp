// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <memory>

#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "hostPlatform/libbinder/transport/Message.h"
#include "tests/hostPlatform/libbinder/PeerProcess.h"

namespace android::test {
namespace {

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
    EXPECT_EQ(OK, mRemote->pingBinder());
    EXPECT_EQ(String16("test.ITestService"), mRemote->getInterfaceDescriptor());

    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kIdentify, &reply));
    EXPECT_EQ(mPeer.pid(), reply.readInt32());
    EXPECT_EQ(getpid(), reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(getuid()), reply.readInt32());

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
    constexpr size_t kLimit = transport::kTransactionSpace;
    for (const size_t size : {kLimit, kLimit + 4}) {
        const auto bytes = [size](Parcel& p) { p.setDataSize(size); };
        EXPECT_EQ(size == kLimit ? OK : FAILED_TRANSACTION,
                  callTest(mRemote, kEcho, nullptr, bytes));
    }
    EXPECT_EQ(7, callInt(mRemote, kEcho, 7));
}

TEST_F(CrossProcessTest, objectsPassBothWaysAndKeepTheirIdentity) {
    const sp<IBinder> local = new TestService();
    EXPECT_EQ(local, callBinder(mRemote, kPass, arguments(local)));
    EXPECT_EQ(mRemote, callBinder(mRemote, kPass, arguments(mRemote)));
    EXPECT_EQ(nullptr, callBinder(mRemote, kPass, arguments(nullptr)));

    const sp<IBinder> made = callBinder(mRemote, kMake);
    EXPECT_NE(mRemote, made);
    EXPECT_EQ(made, callBinder(mRemote, kPass, arguments(made)));
    EXPECT_EQ(3, callInt(made, kEcho, 3));
    EXPECT_EQ(mRemote, mPeer.service());
}

TEST_F(CrossProcessTest, objectsLiveWhileAnyProcessHoldsThem) {
    const int before = TestService::alive;
    sp<IBinder> local = new TestService();
    callTest(mRemote, kKeep, nullptr, arguments(local));
    local.clear();
    EXPECT_EQ(before + 1, TestService::alive);
    EXPECT_EQ(8, callInt(callBinder(mRemote, kGiveBack), kEcho, 8));
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
    EXPECT_TRUE(eventually([&] { return TestService::alive == before; }));

    sp<IBinder> made = callBinder(mRemote, kMake);
    EXPECT_EQ(2, callInt(mRemote, kCount));
    made.clear();
    EXPECT_TRUE(eventually([&] { return callInt(mRemote, kCount) == 1; }));

    callTest(mRemote, kKeep, nullptr, arguments(new TestService()));
    mPeer.kill();
    EXPECT_TRUE(eventually([&] { return TestService::alive == before; }));
}

TEST_F(CrossProcessTest, callsNestOnTheThreadThatWaits) {
    PeerProcess other("test.other");
    const sp<IBinder> second = other.service();
    const sp<TestService> local = new TestService();
    std::thread::id servedBy;
    local->onIdentify = [&] { servedBy = std::this_thread::get_id(); };
    // Through a third process, which has no word of who waits for it but by its caller.
    Parcel reply;
    ASSERT_EQ(OK, callTest(mRemote, kRelay, &reply, arguments(2, second, local)));
    EXPECT_EQ(getpid(), reply.readInt32());
    EXPECT_EQ(other.pid(), reply.readInt32()) << "who was passed on to calls by itself";
    EXPECT_EQ(std::this_thread::get_id(), servedBy);

    // Deeper than there are threads.
    ASSERT_EQ(OK, callTest(mRemote, kRelay, &reply, [&](Parcel& p) {
                  p.writeInt32(100);
                  for (int i = 0; i < 50; i++) {
                      p.writeStrongBinder(local);
                      p.writeStrongBinder(mRemote);
                  }
              }));
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
    // The first is the calling pid, which a one-way call does not tell: 0.
    for (size_t i = 0; i < list.size(); i++) EXPECT_EQ(static_cast<int64_t>(i), list[i]);
}

TEST_F(CrossProcessTest, descriptorsTravel) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    Vector<String16> args;
    args.add(String16("a"));
    args.add(String16(u"\u00e9"));
    EXPECT_EQ(OK, mRemote->dump(ends[1], args));
    close(ends[1]);
    std::string text(100, '\0');
    text.resize(static_cast<size_t>(read(ends[0], text.data(), text.size())));
    EXPECT_EQ("<a><\u00e9>", text);
    // The peer keeps no copy, so that the pipe ends here.
    EXPECT_EQ(0, read(ends[0], text.data(), 1));
    close(ends[0]);
}

TEST_F(CrossProcessTest, manyThreadsCallAtOnce) {
    callTest(mRemote, kKeep, nullptr, arguments(callBinder(mRemote, kMake)));
    std::atomic<int> wrong(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 20; t++) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; i++) {
                if (callInt(mRemote, kEcho, t * 1000 + i) != t * 1000 + i) wrong++;
                if (callInt(callBinder(mRemote, kMake), kEcho, i) != i) wrong++;
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
    mPeer.leave();  // in good order, with connections open
}

}  // namespace
}  // namespace android::test
