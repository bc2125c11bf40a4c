// SPDX-License-Identifier: Apache-2.0
// Objects within one process: in Parcels, called, attached to, and known by name.
#include "tests/hostPlatform/libbinder/ParcelHex.h"

#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/Stability.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/hostPlatform/libbinder/TestService.h"
#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

using internal::Stability;

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
    EXPECT_EQ(-4, manager->addService(String16("a"), nullptr));
    EXPECT_EQ(OK, manager->addService(String16(std::string(127, 'a').c_str()), service));

    const sp<IBinder> other = new TestService();
    EXPECT_EQ(OK, manager->addService(String16("a"), other));
    EXPECT_EQ(other, manager->checkService(String16("a"))) << "a later service replaces an earlier";
    const Vector<String16> names = manager->listServices();
    EXPECT_THAT(std::vector<String16>(names.begin(), names.end()),
                ::testing::IsSupersetOf({String16("a"), String16("a.b-c_D/e"), String16("..")}));
}

}  // namespace
}  // namespace android::test
