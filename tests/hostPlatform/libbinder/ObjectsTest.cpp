// SPDX-License-Identifier: Apache-2.0
// Objects within one process: in Parcels, called, attached to, and known by name.
#include "tests/hostPlatform/libbinder/ParcelHex.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/Stability.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cinttypes>

#include "tests/hostPlatform/libbinder/TestService.h"
#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

using internal::Stability;
using ::testing::ElementsAre;

std::string wordsOf(uint64_t value) {
    Parcel parcel;
    parcel.writeUint64(value);
    return hexOf(parcel);
}

std::string flatHex(const sp<IBinder>& binder, const char* flags, const char* stability) {
    return std::string("852a6273 ") + flags + " " +
           wordsOf(reinterpret_cast<uintptr_t>(binder->getWeakRefs())) + " " +
           wordsOf(reinterpret_cast<uintptr_t>(binder->localBinder())) + " " + stability;
}

TEST(ObjectsTest, aLocalObjectIsWrittenWithItsAddressesFlagsAndStability) {
    const struct {
        const char* name;
        std::function<void(IBinder*)> prepare;
        const char* flags;
        const char* stability;
    } cases[] = {
            {"plain", [](IBinder*) {}, "13010000", "0c000000"},
            {"vendor", Stability::markVndk, "13010000", "03000000"},
            {"vintf", Stability::markVintf, "13010000", "3f000000"},
            {"security context", [](IBinder* b) { b->localBinder()->setRequestingSid(true); },
             "13110000", "0c000000"},
            {"without background scheduling",
             [](IBinder*) { IPCThreadState::disableBackgroundScheduling(true); }, "00010000",
             "0c000000"},
    };
    for (const auto& c : cases) {
        const sp<IBinder> binder = new TestService();
        c.prepare(binder.get());
        Parcel parcel;
        EXPECT_EQ(OK, parcel.writeStrongBinder(binder));
        IPCThreadState::disableBackgroundScheduling(false);
        EXPECT_EQ(flatHex(binder, c.flags, c.stability), hexOf(parcel)) << c.name;
        EXPECT_EQ(1u, parcel.objectsCount());
        parcel.setDataPosition(0);
        EXPECT_EQ(binder, parcel.readStrongBinder()) << c.name;
    }
}

TEST(ObjectsTest, nullIsWrittenAsWordsAndReadAsNull) {
    Parcel parcel;
    EXPECT_EQ(OK, parcel.writeStrongBinder(nullptr));
    EXPECT_EQ("852a6273 13010000 00000000 00000000 00000000 00000000 00000000", hexOf(parcel));
    EXPECT_EQ(0u, parcel.objectsCount());

    sp<IBinder> binder = new TestService();
    parcel.setDataPosition(0);
    EXPECT_EQ(UNEXPECTED_NULL, parcel.readStrongBinder(&binder));
    parcel.setDataPosition(0);
    binder = new TestService();
    EXPECT_EQ(OK, parcel.readNullableStrongBinder(&binder));
    EXPECT_EQ(nullptr, binder);
    parcel.setDataPosition(0);
    EXPECT_EQ(0x73622a85, parcel.readInt32());
}

TEST(ObjectsTest, whatIsNoObjectIsNotReadAsOne) {
    LogCapture log;
    const sp<IBinder> local = new TestService();
    Parcel written;
    written.writeStrongBinder(local);
    Parcel raw;
    raw.setData(written.data(), written.dataSize());
    Parcel words;
    setHex(&words, std::string(28 * 2, '0'));
    Parcel cut;
    cut.appendFrom(&written, 0, 20);
    Parcel wrongStability;
    wrongStability.appendFrom(&written, 0, 24);
    wrongStability.writeInt32(0x3f);
    Parcel empty;
    for (Parcel* const parcel : {&raw, &words, &cut, &wrongStability, &empty}) {
        parcel->setDataPosition(0);
        sp<IBinder> binder;
        EXPECT_EQ(BAD_TYPE, parcel->readStrongBinder(&binder)) << hexOf(*parcel);
        EXPECT_EQ(nullptr, binder);
    }
}

TEST(ObjectsTest, wordsOfALiveObjectAreNotHandedOut) {
    LogCapture log;
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.writeStrongBinder(new TestService());
    for (const size_t position : {4, 8, 24}) {
        parcel.setDataPosition(position);
        int32_t value = 7;
        EXPECT_EQ(PERMISSION_DENIED, parcel.readInt32(&value)) << position;
        EXPECT_EQ(7, value);
        EXPECT_EQ(position + 4, parcel.dataPosition());
    }
    EXPECT_EQ(0x0c, parcel.readInt32()) << "the stability is no part of it";
    parcel.setDataPosition(0);
    int64_t across = 0;
    EXPECT_EQ(PERMISSION_DENIED, parcel.readInt64(&across));
    parcel.setDataPosition(0);
    EXPECT_EQ(nullptr, parcel.readInplace(8));
}

TEST(ObjectsTest, aParcelOwnsWhatItHolds) {
    const int before = TestService::alive();
    auto first = std::make_unique<Parcel>();
    first->writeInt32(1);
    first->writeStrongBinder(new TestService());
    Parcel second;
    EXPECT_EQ(OK, second.appendFrom(first.get(), 4, 28));
    first.reset();
    EXPECT_EQ(before + 1, TestService::alive());

    // Cut off, written over in part, and replaced.
    const std::function<void(Parcel&)> changes[] = {
            [](Parcel& p) { p.setDataSize(20); },
            [](Parcel& p) {
                p.setDataPosition(20);
                p.writeInt32(0);
            },
            [](Parcel& p) {
                p.setDataPosition(0);
                p.writeStrongBinder(nullptr);
            },
    };
    for (const auto& change : changes) {
        Parcel parcel;
        parcel.appendFrom(&second, 0, 28);
        change(parcel);
        EXPECT_EQ(0u, parcel.objectsCount());
    }
    second.freeData();
    EXPECT_EQ(before, TestService::alive());
}

TEST(ObjectsTest, aCallWithinTheProcessIsDirect) {
    const sp<IBinder> local = new TestService();
    Parcel reply;
    EXPECT_EQ(OK, callTest(local, kIdentify, &reply));
    EXPECT_EQ(0u, reply.dataPosition());
    reply.setDataPosition(12);
    EXPECT_EQ(0, reply.readInt32()) << "no flags";
    EXPECT_EQ(UNKNOWN_TRANSACTION, callTest(local, 999, nullptr));
    EXPECT_EQ(OK, callTest(local, IBinder::PING_TRANSACTION, nullptr));
    Parcel descriptor;
    EXPECT_EQ(OK, callTest(local, IBinder::INTERFACE_TRANSACTION, &descriptor));
    EXPECT_EQ(String16("test.ITestService"), descriptor.readString16());
    EXPECT_EQ(INVALID_OPERATION, local->linkToDeath(nullptr));
}

TEST(ObjectsTest, attachedObjectsAreCleanedUpWithTheirs) {
    static int cleaned;
    cleaned = 0;
    int key = 0;
    int value = 0;
    {
        LogCapture log;
        const sp<IBinder> local = new TestService();
        EXPECT_EQ(nullptr, local->findObject(&key));
        local->attachObject(&key, &value, nullptr, [](const void*, void*, void*) { cleaned++; });
        local->attachObject(&key, &key, nullptr, nullptr);
        EXPECT_EQ(&value, local->findObject(&key)) << "the first stays";
        local->attachObject(&value, &value, nullptr, [](const void*, void*, void*) { cleaned++; });
        local->detachObject(&value);
        EXPECT_EQ(nullptr, local->findObject(&value));
    }
    EXPECT_EQ(1, cleaned);
}

TEST(ServiceManagerTest, namesAreThoseOfADevice) {
    const sp<IServiceManager> manager = defaultServiceManager();
    const sp<IBinder> service = new TestService();
    EXPECT_EQ(nullptr, manager->getService(String16("absent")));
    for (const char* const name : {"a", "a.b-c_D/e", ".hidden", "..", "x/../y"}) {
        EXPECT_EQ(OK, manager->addService(String16(name), service)) << name;
        EXPECT_EQ(service, manager->getService(String16(name))) << name;
    }
    for (const std::string& name : {std::string(), std::string("a b"), std::string(128, 'a')}) {
        EXPECT_EQ(-3, manager->addService(String16(name.c_str()), service)) << name;
    }
    EXPECT_EQ(-3, manager->addService(String16("a"), nullptr));
    EXPECT_EQ(OK, manager->addService(String16(std::string(127, 'a').c_str()), service));

    const sp<IBinder> other = new TestService();
    EXPECT_EQ(OK, manager->addService(String16("a"), other));
    EXPECT_EQ(other, manager->checkService(String16("a"))) << "a later service replaces an earlier";
    const Vector<String16> names = manager->listServices();
    EXPECT_THAT(std::vector<String16>(names.begin(), names.end()),
                ::testing::IsSupersetOf({String16("a"), String16("a.b-c_D/e"), String16("..")}));
}

TEST(ServiceManagerDeathTest, theDefaultIsSetBeforeItIsAskedForOrNever) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
            {
                const sp<IServiceManager> first = defaultServiceManager();
                setDefaultServiceManager(first);
            },
            ::testing::KilledBySignal(SIGABRT),
            "setDefaultServiceManager\\(\\) may not be called after defaultServiceManager\\(\\)");
}

}  // namespace
}  // namespace android::test
