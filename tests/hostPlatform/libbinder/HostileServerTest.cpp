// SPDX-License-Identifier: Apache-2.0
// Services whose process does not keep to the protocol; the test itself is the client.
#include <limits>
#include <memory>

#include <binder/IServiceManager.h>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "hostPlatform/libbinder/transport/RuntimeDir.h"
#include "tests/hostPlatform/libbinder/PeerProcess.h"

namespace android::test {
namespace {

using namespace transport;

// One end of a connection that a script speaks for.
class Line {
  public:
    explicit Line(int fd) : mFd(fd) {}

    // The next message of the client; a kDone of id 0 if it hangs up or is silent for long.
    Message read() {
        for (;;) {
            Message message;
            size_t used = 0;
            if (decodeMessage(mIn.data(), mIn.size(), &message, &used) == Decoded::kMessage) {
                mIn.erase(mIn.begin(), mIn.begin() + static_cast<ptrdiff_t>(used));
                return message;
            }
            pollfd ready = {mFd, POLLIN, 0};
            uint8_t buffer[4096];
            ssize_t got = poll(&ready, 1, 10000) > 0 ? recv(mFd, buffer, sizeof(buffer), 0) : 0;
            if (got <= 0) return Message(MessageKind::kDone);
            mIn.insert(mIn.end(), buffer, buffer + got);
        }
    }

    void write(const std::vector<uint8_t>& bytes) {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
                  send(mFd, bytes.data(), bytes.size(), MSG_NOSIGNAL));
    }
    void write(const Message& message) { write(encodeMessage(message)); }

    // Gives the client's id.
    PeerId welcome(const PeerId& self) {
        const Message hello = read();
        EXPECT_EQ(MessageKind::kHello, hello.kind);
        Message greeting(MessageKind::kWelcome);
        greeting.version = kProtocolVersion;
        greeting.peer = self;
        write(greeting);
        return hello.peer;
    }

    void acquired(status_t status = OK) {
        Message answer = read();
        EXPECT_EQ(MessageKind::kAcquire, answer.kind);
        answer.kind = MessageKind::kAcquired;
        answer.status = status;
        write(answer);
    }

  private:
    const int mFd;
    std::vector<uint8_t> mIn;
};

Message replyTo(const Message& call, std::vector<uint8_t> data) {
    Message reply(MessageKind::kReply, call.id);
    reply.payload.data = std::move(data);
    return reply;
}

class HostileServerTest : public ::testing::Test {
  protected:
    ~HostileServerTest() override {
        if (mServer.joinable()) mServer.join();
        EXPECT_EQ(5, callInt(mOther.service(), kEcho, 5)) << "others are reached as ever";
    }

    // Hosts "test.hostile" in a thread that serves one connection with |script|.
    void serve(std::function<void(Line&)> script) {
        if (mServer.joinable()) mServer.join();
        mSelf.nonce++;
        mListener = mDir.listenAs(mSelf);
        ASSERT_TRUE(mDir.publish("test.hostile", {mSelf, 1}));
        mServer = std::thread([this, script] {
            pollfd ready = {mListener.get(), POLLIN, 0};
            poll(&ready, 1, 10000);
            const base::unique_fd socket(accept4(mListener.get(), nullptr, nullptr, SOCK_CLOEXEC));
            Line line(socket.get());
            script(line);
            mListener.reset();
        });
    }

    static sp<IBinder> service() {
        return defaultServiceManager()->getService(String16("test.hostile"));
    }

    const RuntimeDir mDir;
    PeerId mSelf = {1, 0};
    base::unique_fd mListener;
    std::thread mServer;
    PeerProcess mOther{"test.honest"};
};

TEST_F(HostileServerTest, aServiceThatDoesNotGreetIsNotFound) {
    const struct {
        const char* name;
        std::function<void(Line&)> script;
    } cases[] = {
            {"hangs up", [](Line&) {}},
            {"text", [](Line& l) { l.write(std::vector<uint8_t>(100, 'x')); }},
            {"hello in return", [](Line& l) { l.write(l.read()); }},
            {"is another",
             [](Line& l) {
                 l.welcome({1, 4711});
             }},
            {"object refused",
             [this](Line& l) {
                 l.welcome(mSelf);
                 l.acquired(DEAD_OBJECT);
             }},
            {"no answer",
             [this](Line& l) {
                 l.welcome(mSelf);
                 l.read();
             }},
    };
    for (const auto& c : cases) {
        serve(c.script);
        EXPECT_EQ(nullptr, service()) << c.name;
    }
}

TEST_F(HostileServerTest, aSilentServiceIsWaitedForABoundedTime) {
    serve([](Line& l) {
        l.read();
        l.read();  // until the client gives up
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(nullptr, service());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST_F(HostileServerTest, aReplyCountsEvenIfTheServerIsGoneByThen) {
    serve([this](Line& l) {
        l.welcome(mSelf);
        l.acquired();
        l.write(replyTo(l.read(), {9, 0, 0, 0}));
    });
    const sp<IBinder> remote = service();
    ASSERT_NE(nullptr, remote);
    EXPECT_EQ(9, callInt(remote, kEcho));
    mServer.join();
    EXPECT_TRUE(eventually([&] { return callInt(remote, kEcho) == DEAD_OBJECT; }));
}

TEST_F(HostileServerTest, whateverElseComesEndsTheCall) {
    const std::vector<uint8_t> whole = encodeMessage(replyTo(Message(MessageKind::kCall, 1), {1}));
    const struct {
        const char* name;
        std::vector<uint8_t> answer;
    } cases[] = {
            {"half a reply", {whole.begin(), whole.end() - 1}},
            {"reply to another call", encodeMessage(Message(MessageKind::kReply, 999))},
            {"a call", encodeMessage(Message(MessageKind::kCall, 1))},
            {"giant length", std::vector<uint8_t>(16, 0xff)},
    };
    for (const auto& c : cases) {
        serve([&](Line& l) {
            l.welcome(mSelf);
            l.acquired();
            l.read();
            l.write(c.answer);
            l.read();
        });
        const sp<IBinder> remote = service();
        ASSERT_NE(nullptr, remote) << c.name;
        EXPECT_EQ(DEAD_OBJECT, callInt(remote, kEcho)) << c.name;
        mServer.join();  // it uses what ends with this test
    }
}

TEST_F(HostileServerTest, anObjectInAReplyIsOneOfOursOrTakenForADeadOne) {
    for (const bool claimsOurs : {true, false}) {
        serve([=](Line& l) {
            const PeerId client = l.welcome(mSelf);
            l.acquired();
            Message reply = replyTo(l.read(), std::vector<uint8_t>(28));
            reply.payload.data[24] = 0x0c;
            reply.payload.objects = {{0, {claimsOurs ? client : PeerId{7, 7}, 4711}}};
            l.write(reply);
            EXPECT_EQ(MessageKind::kTaken, l.read().kind);
        });
        Parcel reply;
        EXPECT_EQ(claimsOurs ? FAILED_TRANSACTION : OK, callTest(service(), kMake, &reply));
        const sp<IBinder> dead = reply.readStrongBinder();
        ASSERT_EQ(claimsOurs, dead == nullptr);
        if (claimsOurs) continue;
        EXPECT_FALSE(dead->isBinderAlive());
        EXPECT_EQ(DEAD_OBJECT, callInt(dead, kEcho));
    }
}

}  // namespace
}  // namespace android::test
