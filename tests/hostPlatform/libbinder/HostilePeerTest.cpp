// SPDX-License-Identifier: Apache-2.0
// Processes that speak to a peer without being one.
#include <limits>
#include <memory>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <dirent.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <random>

#include "hostPlatform/libbinder/transport/Message.h"
#include "hostPlatform/libbinder/transport/RuntimeDir.h"
#include "tests/hostPlatform/libbinder/PeerProcess.h"

namespace android::test {
namespace {

using namespace transport;

class HostilePeerTest : public ::testing::Test {
  protected:
    HostilePeerTest() {
        ProcessState::self()->startThreadPool();
        ObjectAddress address;
        EXPECT_TRUE(mDir.find("test.victim", &address));
        mVictim = address.peer;
        mObject = address.object;
    }

    // Everyone else is served as ever.
    ~HostilePeerTest() override {
        EXPECT_EQ(5, callInt(mRemote, kEcho, 5));
        EXPECT_EQ(1, callInt(mRemote, kCount)) << "nothing that strangers held is left";
        mPeer.leave();
    }

    base::unique_fd connect() const { return mDir.connectTo(mVictim); }

    static void sendBytes(const base::unique_fd& socket, const std::vector<uint8_t>& bytes) {
        for (size_t done = 0; done < bytes.size();) {
            pollfd ready = {socket.get(), POLLOUT, 0};
            poll(&ready, 1, 10000);
            const ssize_t sent =
                    send(socket.get(), bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (sent < 0 && errno != EAGAIN) return;
            if (sent > 0) done += static_cast<size_t>(sent);
        }
    }

    // Reads until the victim closes the connection; false if it does not within |ms|.
    static bool isDropped(const base::unique_fd& socket, int ms = 10000) {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(ms);
        uint8_t buffer[4096];
        while (Clock::now() < end) {
            pollfd ready = {socket.get(), POLLIN, 0};
            poll(&ready, 1, 100);
            const ssize_t got = recv(socket.get(), buffer, sizeof(buffer), MSG_DONTWAIT);
            if (got == 0 || (got < 0 && errno != EAGAIN)) return true;
        }
        return false;
    }

    static std::vector<uint8_t> hello() {
        Message message(MessageKind::kHello);
        message.version = kProtocolVersion;
        message.peer = {4711, 1};
        return encodeMessage(message);
    }

    std::vector<uint8_t> bytesOf(MessageKind kind) const {
        Message message(kind, 1);
        message.object = mObject;
        message.code = kEcho;
        message.payload.data.resize(4);
        return encodeMessage(message);
    }

    const RuntimeDir mDir;
    PeerProcess mPeer{"test.victim"};
    const sp<IBinder> mRemote = mPeer.service();
    PeerId mVictim;
    uint64_t mObject = 0;
};

std::vector<uint8_t> join(std::vector<uint8_t> first, const std::vector<uint8_t>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(HostilePeerTest, whatIsNoMessageEndsTheConnection) {
    Message version(MessageKind::kHello);
    version.version = kProtocolVersion + 1;
    const struct {
        const char* name;
        std::vector<uint8_t> bytes;
    } cases[] = {
            {"text", std::vector<uint8_t>(100, 'G')},
            {"zeros", std::vector<uint8_t>(100, 0)},
            {"giant length", {0xff, 0xff, 0xff, 0xff, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
            {"another version", encodeMessage(version)},
            {"a call without a greeting", bytesOf(MessageKind::kCall)},
            {"a second greeting", join(hello(), hello())},
            {"an answer to nothing", join(hello(), bytesOf(MessageKind::kReply))},
            {"release of what is not held", join(hello(), bytesOf(MessageKind::kRelease))},
            {"garbage after a greeting", join(hello(), std::vector<uint8_t>(1000, 0xee))},
    };
    for (const auto& c : cases) {
        const base::unique_fd socket = connect();
        sendBytes(socket, c.bytes);
        EXPECT_TRUE(isDropped(socket)) << c.name;
    }
}

TEST_F(HostilePeerTest, silentAndHalfSpokenPeersAreDroppedInTime) {
    std::vector<uint8_t> call = join(hello(), bytesOf(MessageKind::kCall));
    call.pop_back();
    const std::vector<uint8_t> beginnings[] = {{}, {20, 0, 0}, call};
    std::vector<base::unique_fd> sockets;
    for (const auto& bytes : beginnings) sendBytes(sockets.emplace_back(connect()), bytes);
    const base::unique_fd idle = connect();
    sendBytes(idle, hello());
    for (const base::unique_fd& socket : sockets) EXPECT_TRUE(isDropped(socket));
    EXPECT_FALSE(isDropped(idle, 500)) << "whoever has greeted may say nothing for ever";
}

TEST_F(HostilePeerTest, aCrowdOfStrangersDoesNotKeepOthersOut) {
    std::vector<base::unique_fd> strangers(65);
    for (base::unique_fd& socket : strangers) socket = connect();
    EXPECT_TRUE(isDropped(strangers.front(), 3000)) << "the oldest gives way to a new one";
    EXPECT_FALSE(isDropped(strangers.back(), 200));
    strangers.clear();

    const rlimit few = {40, 40};
    ASSERT_EQ(0, prlimit(mPeer.pid(), RLIMIT_NOFILE, &few, nullptr));
    strangers.resize(50);
    for (base::unique_fd& socket : strangers) socket = connect();
    EXPECT_EQ(6, callInt(mRemote, kEcho, 6)) << "who is connected stays so";
    strangers.clear();
    const base::unique_fd later = connect();
    sendBytes(later, hello());
    pollfd ready = {later.get(), POLLIN, 0};
    EXPECT_EQ(1, poll(&ready, 1, 10000)) << "and who comes later is greeted";
}

TEST_F(HostilePeerTest, aCallOfWhatIsNotHeldFails) {
    const base::unique_fd socket = connect();
    sendBytes(socket, join(hello(), bytesOf(MessageKind::kCall)));
    std::vector<uint8_t> received;
    Message messages[2];  // the welcome and the reply
    for (Message& message : messages) {
        size_t used = 0;
        ASSERT_TRUE(eventually([&] {
            uint8_t byte;
            while (recv(socket.get(), &byte, 1, MSG_DONTWAIT) == 1) received.push_back(byte);
            return decodeMessage(received.data(), received.size(), &message, &used) ==
                   Decoded::kMessage;
        }));
        received.erase(received.begin(), received.begin() + static_cast<ptrdiff_t>(used));
    }
    EXPECT_EQ(mVictim, messages[0].peer);
    EXPECT_EQ(MessageKind::kReply, messages[1].kind);
    EXPECT_EQ(DEAD_OBJECT, messages[1].status);
}

TEST_F(HostilePeerTest, whoAsksForMuchAndTakesNothingIsCutOff) {
    const base::unique_fd socket = connect();
    Message call(MessageKind::kCall);
    call.object = mObject;
    call.code = kReplySize;
    call.payload.data = {0, 0, 8, 0};  // half a megabyte
    const std::vector<uint8_t> bytes = encodeMessage(call);
    sendBytes(socket, join(hello(), bytesOf(MessageKind::kAcquire)));
    std::vector<uint8_t> many;
    for (int i = 0; i < 100; i++) many = join(many, bytes);
    sendBytes(socket, many);
    // Shut for writing there, which shows here without reading a byte.
    EXPECT_TRUE(eventually(
            [&] { return send(socket.get(), "", 1, MSG_NOSIGNAL) < 0 && errno == EPIPE; }));
}

TEST_F(HostilePeerTest, objectsAtAddressesThatLieAreDeadOrRefused) {
    const base::unique_fd socket = connect();
    sendBytes(socket, join(hello(), bytesOf(MessageKind::kAcquire)));
    Message call(MessageKind::kCall);
    call.object = mObject;
    call.code = kKeep;
    call.payload.data.resize(28);
    call.payload.data[24] = 0x0c;
    for (const ObjectAddress& address :
         {ObjectAddress{{1, 2}, 3}, ObjectAddress{mVictim, 0}, ObjectAddress{mVictim, 1u << 30},
          ObjectAddress{{4711, 1}, 1}, ObjectAddress{{}, 0}}) {
        call.id++;
        call.payload.objects = {{0, address}};
        sendBytes(socket, encodeMessage(call));
    }
    EXPECT_TRUE(eventually([&] {
        Parcel reply;
        return callTest(mRemote, kGiveBack, &reply) == OK && reply.objectsCount() == 1;
    }));
    callTest(mRemote, kKeep, nullptr, arguments(nullptr));
}

TEST_F(HostilePeerTest, randomBytesDoNoHarm) {
    std::minstd_rand random(1);
    for (int round = 0; round < 200; round++) {
        const base::unique_fd socket = connect();
        std::vector<uint8_t> bytes = join(hello(), bytesOf(MessageKind::kAcquire));
        for (int i = 0; i < 5; i++)
            bytes = join(bytes, bytesOf(static_cast<MessageKind>(1 + random() % 9)));
        for (int i = 0; i < 3; i++) bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        sendBytes(socket, bytes);
    }
}

}  // namespace
}  // namespace android::test
