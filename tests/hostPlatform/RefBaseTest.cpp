// SPDX-License-Identifier: Apache-2.0
// Reference counting as libutils defines it. Under ThreadSanitizer the counts are our own, so that
// the same cases compare the two implementations.

#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <utils/RefBase.h>
#include <utils/String16.h>
#include <utils/String8.h>
#include <utils/Vector.h>

namespace android {
namespace {

/** Writes down what happens to it. */
class Object : public RefBase {
  public:
    explicit Object(std::string* events, int32_t lifetime = OBJECT_LIFETIME_STRONG)
        : mEvents(events) {
        extendObjectLifetime(lifetime);
    }
    ~Object() override { *mEvents += "destroyed "; }

    static constexpr int32_t kWeakLifetime = OBJECT_LIFETIME_WEAK;

  protected:
    void onFirstRef() override { *mEvents += "first "; }
    void onLastStrongRef(const void*) override { *mEvents += "lastStrong "; }
    void onLastWeakRef(const void*) override { *mEvents += "lastWeak "; }
    bool onIncStrongAttempted(uint32_t flags, const void* id) override {
        *mEvents += "attempted ";
        return RefBase::onIncStrongAttempted(flags, id);
    }

  private:
    std::string* const mEvents;
};

TEST(RefBaseTest, objectGoesWithItsLastStrongReference) {
    std::string events;
    wp<Object> weak;
    {
        sp<Object> strong = new Object(&events);
        weak = strong;
        sp<Object> second = strong;
        EXPECT_EQ(strong->getStrongCount(), 2);
        // The two strong references, and weak.
        EXPECT_EQ(strong->getWeakRefs()->getWeakCount(), 3);
        EXPECT_EQ(strong->getWeakRefs()->refBase(), strong.get());
        EXPECT_EQ(weak.promote(), strong);
        EXPECT_EQ(events, "first ");
    }
    EXPECT_EQ(events, "first lastStrong destroyed ");
    EXPECT_EQ(weak.promote(), nullptr);
}

TEST(RefBaseTest, whenLifetimeIsExtended_objectGoesWithItsLastWeakReference) {
    std::string events;
    wp<Object> weak;
    {
        sp<Object> strong = new Object(&events, Object::kWeakLifetime);
        weak = strong;
    }
    EXPECT_EQ(events, "first lastStrong ");
    weak.promote();
    EXPECT_EQ(events, "first lastStrong attempted lastStrong ");
    EXPECT_TRUE(weak.get_refs()->attemptIncWeak(nullptr));
    weak.get_refs()->decWeak(nullptr);
    weak.clear();
    EXPECT_EQ(events, "first lastStrong attempted lastStrong lastWeak destroyed ");
}

TEST(RefBaseTest, forcedReferenceRevivesAnExtendedObject) {
    std::string events;
    wp<Object> weak(new Object(&events, Object::kWeakLifetime));
    Object* const object = weak.unsafe_get();
    object->forceIncStrong(nullptr);
    object->decStrong(nullptr);
    object->forceIncStrong(nullptr);
    object->decStrong(nullptr);
    EXPECT_EQ(events, "first lastStrong first lastStrong ");
    weak.clear();
    EXPECT_EQ(events, "first lastStrong first lastStrong lastWeak destroyed ");
}

class Payload : public RefBase {
  public:
    explicit Payload(std::atomic<int>* destroyed) : mDestroyed(destroyed) {}
    ~Payload() override {
        // Plain memory that the other threads used until they let go.
        mValue = 0;
        mDestroyed->fetch_add(1);
    }

    int mValue = 1;

  private:
    std::atomic<int>* const mDestroyed;
};

TEST(RefBaseTest, whenLastReferencesRace_objectGoesOnce) {
    constexpr int kRounds = 500;
    std::atomic<int> destroyed{0};
    std::atomic<int> sum{0};
    for (int round = 0; round < kRounds; ++round) {
        sp<Payload> payload = new Payload(&destroyed);
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t) {
            threads.emplace_back([&sum, own = payload, weak = wp<Payload>(payload)]() mutable {
                sum += own->mValue;
                own.clear();
                const sp<Payload> promoted = weak.promote();
                if (promoted != nullptr) sum += promoted->mValue - 1;
            });
        }
        payload.clear();
        for (std::thread& thread : threads) thread.join();
    }
    EXPECT_EQ(destroyed, kRounds);
    EXPECT_EQ(sum, 3 * kRounds);
}

TEST(SharedBufferTest, whenCopiesDieOnSeveralThreads_eachReadsItsOwn) {
    std::atomic<size_t> sum{0};
    for (int round = 0; round < 200; ++round) {
        auto text = std::make_unique<String8>("text");
        auto wide = std::make_unique<String16>("wide");
        auto numbers = std::make_unique<Vector<int>>();
        numbers->add(1);
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t) {
            threads.emplace_back([&sum, text = *text, wide = *wide, numbers = *numbers]() mutable {
                sum += strlen(text.string()) + (wide.string()[0] == u'w') + numbers[0];
                text.append("!");
                numbers.add(2);
            });
        }
        text.reset();
        wide.reset();
        numbers.reset();
        for (std::thread& thread : threads) thread.join();
    }
    EXPECT_EQ(sum, 200u * 3 * (4 + 1 + 1));
}

}  // namespace
}  // namespace android
