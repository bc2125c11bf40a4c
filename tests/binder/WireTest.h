// SPDX-License-Identifier: Apache-2.0
// What the tests of the wire share. Bytes are written as hexadecimal words of four in memory order.
#pragma once

#include <limits>
#include <memory>

#include <stdio.h>

#include <string>
#include <vector>

#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <binder/Status.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace android::test {

/** The bytes of `parcel` as hexadecimal words of four bytes, in memory order. */
inline std::string hexOf(const Parcel& parcel) {
    std::string hex;
    for (size_t i = 0; i < parcel.dataSize(); i++) {
        char digits[3];
        snprintf(digits, sizeof(digits), "%02x", parcel.data()[i]);
        if (i > 0 && i % 4 == 0) hex += ' ';
        hex += digits;
    }
    return hex;
}

/** Fills `parcel` with the bytes that `hex` (blanks ignored) stands for, position 0. */
inline void setHex(Parcel* parcel, const std::string& hex) {
    std::vector<uint8_t> bytes;
    uint8_t byte;
    int used;
    for (const char* c = hex.c_str(); sscanf(c, " %2hhx%n", &byte, &used) == 1; c += used) {
        bytes.push_back(byte);
    }
    parcel->setData(bytes.data(), bytes.size());
    parcel->setDataPosition(0);
}

// How every request starts, by interface: strict-mode word, work source, 'SYST', descriptor.
#define CLIENT_TOKEN                                                                    \
    "00000080 ffffffff 54535953 25000000 61006e00 64007200 6f006900 64002e00 6d006500 " \
    "64006900 61002e00 49004d00 65006400 69006100 43006f00 64006500 63004c00 6f006700 " \
    "67006500 72004300 6c006900 65006e00 74000000"
#define SERVICE_TOKEN                                                                   \
    "00000080 ffffffff 54535953 26000000 61006e00 64007200 6f006900 64002e00 6d006500 " \
    "64006900 61002e00 49004d00 65006400 69006100 43006f00 64006500 63004c00 6f006700 " \
    "67006500 72005300 65007200 76006900 63006500 00000000"
#define LISTENER_TOKEN                                                                  \
    "00000080 ffffffff 54535953 27000000 61006e00 64007200 6f006900 64002e00 6d006500 " \
    "64006900 61002e00 49004d00 65006400 69006100 43006f00 64006500 63004c00 6f006700 " \
    "67006500 72004c00 69007300 74006500 6e006500 72000000"

/** A binder object of this process: any two addresses, and the system's stability. */
#define LOCAL_BINDER "852a6273 13010000 ???????? ???????? ???????? ???????? 0c000000"
#define NULL_BINDER "852a6273 13010000 00000000 00000000 00000000 00000000 00000000"
#define EX_NULL_POINTER_REPLY "fcffffff 00000000 00000000 00000000"

/** Equal to `pattern`, in which "?" stands for any digit. */
MATCHER_P(HasBytes, pattern, std::string("is ") + pattern) {
    const std::string expected = pattern;
    if (arg.size() != expected.size()) return false;
    for (size_t i = 0; i < arg.size(); ++i) {
        if (expected[i] != '?' && expected[i] != arg[i]) return false;
    }
    return true;
}

/** One call as it was on the wire. */
struct Transaction {
    uint32_t code = 0;
    uint32_t flags = 0;
    std::string request;
    status_t result = OK;
    std::string reply;
};

/**
 * Stands between a proxy and an object of the same process as a process boundary would: the object
 * is not found as local, a failed call has an empty reply, and a one-way call has none and never
 * fails. Keeps the last transaction.
 */
class Boundary : public BBinder {
  public:
    explicit Boundary(const sp<IBinder>& target) : mTarget(target) {}
    const Transaction& last() const { return mLast; }

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        Parcel request;
        Parcel answer;
        request.appendFrom(&data, 0, data.dataSize());
        mLast = {code, flags, hexOf(data), OK, ""};
        mLast.result = mTarget->transact(code, request, &answer, flags);
        if ((flags & FLAG_ONEWAY) != 0) return OK;
        if (mLast.result == OK) {
            reply->appendFrom(&answer, 0, answer.dataSize());
            mLast.reply = hexOf(answer);
        }
        return mLast.result;
    }

  private:
    const sp<IBinder> mTarget;
    Transaction mLast;
};

/** A peer that gives every call the same answer. */
class CannedPeer : public BBinder {
  public:
    CannedPeer(status_t result, const std::string& reply = "") : mResult(result), mReply(reply) {}

  protected:
    status_t onTransact(uint32_t, const Parcel&, Parcel* reply, uint32_t) override {
        Parcel answer;
        setHex(&answer, mReply);
        reply->appendFrom(&answer, 0, answer.dataSize());
        return mResult;
    }

  private:
    const status_t mResult;
    const std::string mReply;
};

/** Sends bytes to a stub, as any peer can. A reply that the call failed with does not travel. */
inline Transaction sendRaw(const sp<IBinder>& stub, uint32_t code, const std::string& request,
                           uint32_t flags = 0) {
    Parcel data;
    Parcel reply;
    setHex(&data, request);
    Transaction sent{code, flags, request, OK, ""};
    sent.result = stub->transact(code, data, &reply, flags);
    sent.reply = hexOf(reply);
    return sent;
}

/** An object for setDefaultImpl(), whose owner deletes it although it counts references. */
template <typename Implementation>
struct AsDefault : Implementation {
    template <typename... Arguments>
    explicit AsDefault(Arguments... arguments) : Implementation(arguments...) {
        this->extendObjectLifetime(RefBase::OBJECT_LIFETIME_WEAK);
    }
};

/** "-4 no listener" or "-129 DEAD_OBJECT as a number"; "ok". */
inline std::string textOf(const binder::Status& status) {
    if (status.isOk()) return "ok";
    if (status.exceptionCode() == binder::Status::EX_TRANSACTION_FAILED) {
        return "failed " + std::to_string(status.transactionError());
    }
    return std::to_string(status.exceptionCode()) + " " + status.exceptionMessage().string();
}

/** "{a b}" */
template <typename Range>
std::string listOf(const Range& range) {
    std::string text = "{";
    for (const auto& item : range) {
        if (text.size() > 1) text += ' ';
        if constexpr (std::is_integral_v<std::decay_t<decltype(item)>>) {
            text += std::to_string(item);
        } else {
            text += item;
        }
    }
    return text + "}";
}

}  // namespace android::test
