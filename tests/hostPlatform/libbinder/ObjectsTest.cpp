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
    struct {
        const char* name;
        std::function<void(const sp<IBinder>&)> prepare;
        const char* flags;
        const char* stability;
    } cases[] = {
            {"plain", [](const sp<IBinder>&) {}, "13010000", "0c000000"},
            {"marked", [](const sp<IBinder>& b) { Stability::markCompilationUnit(b.get()); },
             "13010000", "0c000000"},
            {"vendor", [](const sp<IBinder>& b) { Stability::markVndk(b.get()); }, "13010000",
             "03000000"},
            {"vintf", [](const sp<IBinder>& b) { Stability::markVintf(b.get()); }, "13010000",
             "3f000000"},
            {"security context",
             [](const sp<IBinder>& b) { b->localBinder()->setRequestingSid(true); }, "13110000",
             "0c000000"},
    };
    for (const auto& c : cases) {
        const sp<IBinder> binder = new TestService();
        c.prepare(binder);
        Parcel parcel;
        EXPECT_EQ(OK, parcel.writeStrongBinder(binder));
        EXPECT_EQ(flatHex(binder, c.flags, c.stability), hexOf(parcel)) << c.name;
        EXPECT_EQ(1u, parcel.objectsCount());
        parcel.setDataPosition(0);
        EXPECT_EQ(binder, parcel.readStrongBinder()) << c.name;
    }
    IPCThreadState::disableBackgroundScheduling(true);
    const sp<IBinder> binder = new TestService();
    Parcel parcel;
    parcel.writeStrongBinder(binder);
    IPCThreadState::disableBackgroundScheduling(false);
    EXPECT_EQ(flatHex(binder, "00010000", "0c000000"), hexOf(parcel));
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
    Parcel empty;
    Parcel wrongStability;
    wrongStability.appendFrom(&written, 0, 24);
    wrongStability.writeInt32(5);
    Parcel otherStability;
    otherStability.appendFrom(&written, 0, 24);
    otherStability.writeInt32(0x3f);
    for (Parcel* const parcel : {&raw, &words, &cut, &empty, &wrongStability, &otherStability}) {
        parcel->setDataPosition(0);
        sp<IBinder> binder;
        EXPECT_EQ(BAD_TYPE, parcel->readStrongBinder(&binder)) << hexOf(*parcel);
        EXPECT_EQ(nullptr, binder);
        parcel->setDataPosition(0);
        EXPECT_EQ(nullptr, parcel->readStrongBinder());
    }
}

TEST(ObjectsTest, wordsOfALiveObjectAreNotHandedOut) {
    LogCapture log;
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.writeStrongBinder(new TestService());
    const size_t denied[] = {4, 8, 24};
    for (const size_t position : denied) {
        parcel.setDataPosition(position);
        int32_t value = 7;
        EXPECT_EQ(PERMISSION_DENIED, parcel.readInt32(&value)) << position;
        EXPECT_EQ(7, value);
        EXPECT_EQ(position + 4, parcel.dataPosition());
    }
    parcel.setDataPosition(0);
    EXPECT_EQ(1, parcel.readInt32());
    parcel.setDataPosition(28);
    EXPECT_EQ(0x0c, parcel.readInt32());
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
    second.setDataPosition(0);
    EXPECT_NE(nullptr, second.readStrongBinder());

    const struct {
        const char* name;
        std::function<void(Parcel&)> change;
    } cases[] = {
            {"cut", [](Parcel& p) { p.setDataSize(20); }},
            {"overwritten",
             [](Parcel& p) {
                 p.setDataPosition(20);
                 p.writeInt32(0);
             }},
            {"replaced",
             [](Parcel& p) {
                 p.setDataPosition(0);
                 p.writeStrongBinder(nullptr);
             }},
            {"freed", [](Parcel& p) { p.freeData(); }},
    };
    for (const auto& c : cases) {
        Parcel parcel;
        parcel.appendFrom(&second, 0, 28);
        c.change(parcel);
        EXPECT_EQ(0u, parcel.objectsCount()) << c.name;
    }
    EXPECT_EQ(before + 1, TestService::alive());
    second.freeData();
    EXPECT_EQ(before, TestService::alive());
}

TEST(ObjectsTest, aCallWithinTheProcessIsDirect) {
    const sp<IBinder> local = new TestService();
    Parcel data;
    data.writeInt32(5);
    Parcel reply;
    EXPECT_EQ(OK, local->transact(kEcho, data, &reply));
    EXPECT_EQ(0u, reply.dataPosition());
    EXPECT_EQ(5, reply.readInt32());
    Parcel flags;
    EXPECT_EQ(OK, local->transact(kIdentify, data, &flags));
    flags.setDataPosition(12);
    EXPECT_EQ(0, flags.readInt32());

    EXPECT_EQ(UNKNOWN_TRANSACTION, local->transact(999, data, nullptr));
    EXPECT_EQ(OK, local->transact(IBinder::PING_TRANSACTION, data, nullptr));
    Parcel descriptor;
    EXPECT_EQ(OK, local->transact(IBinder::INTERFACE_TRANSACTION, data, &descriptor));
    EXPECT_EQ(String16("test.ITestService"), descriptor.readString16());
    EXPECT_EQ(INVALID_OPERATION, local->linkToDeath(nullptr));

    const sp<IBinder> extension = new TestService();
    local->localBinder()->setExtension(extension);
    Parcel extended;
    EXPECT_EQ(OK, local->transact(IBinder::EXTENSION_TRANSACTION, data, &extended));
    EXPECT_EQ(extension, extended.readStrongBinder());
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
