// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "RefBase"
#include <log/log.h>
#include <stdint.h>

#include <atomic>

#include <utils/RefBase.h>

// The counts as libutils keeps them, compiled with the sanitizer. Two rules carry the rest:
//  - every strong reference also is a weak one;
//  - the object goes with its last strong reference, its counts with the last weak one. An object
//    whose lifetime was extended goes with its last weak reference.
// There are no fences, which ThreadSanitizer cannot follow.

namespace android {

namespace {

/** The strong count of an object that never had a strong reference. */
constexpr int32_t kNeverReferenced = 1 << 28;

}  // namespace

class RefBase::weakref_impl : public RefBase::weakref_type {
  public:
    explicit weakref_impl(RefBase* base) : mBase(base) {}

    bool isKeptByWeakReferences() const {
        return (mFlags.load(std::memory_order_relaxed) & OBJECT_LIFETIME_MASK) ==
               OBJECT_LIFETIME_WEAK;
    }

    bool wasEverReferenced() const {
        return mStrong.load(std::memory_order_relaxed) != kNeverReferenced;
    }

    /** Adds one unless the count is 0 or, while !fromInitial, unless it is the initial value. */
    bool incStrongIfAlive(bool fromInitial) {
        int32_t count = mStrong.load(std::memory_order_relaxed);
        while (count > 0 && (fromInitial || count != kNeverReferenced)) {
            if (mStrong.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
                dropInitial(count);
                return true;
            }
        }
        return false;
    }

    /** To be called with the count before an increment, by the thread that incremented. */
    bool dropInitial(int32_t countBefore) {
        if (countBefore != kNeverReferenced) return false;
        mStrong.fetch_sub(kNeverReferenced, std::memory_order_relaxed);
        return true;
    }

    RefBase* const mBase;
    std::atomic<int32_t> mStrong{kNeverReferenced};
    std::atomic<int32_t> mWeak{0};
    std::atomic<int32_t> mFlags{0};
};

RefBase::RefBase() : mRefs(new weakref_impl(this)) {}

RefBase::~RefBase() {
    if (mRefs->isKeptByWeakReferences()) {
        if (mRefs->mWeak.load(std::memory_order_relaxed) == 0) delete mRefs;
    } else if (!mRefs->wasEverReferenced()) {
        LOG_ALWAYS_FATAL_IF(mRefs->mWeak.load(std::memory_order_relaxed) != 0,
                            "destroyed by hand while weak references exist");
        delete mRefs;
    }
}

void RefBase::incStrong(const void* id) const {
    mRefs->incWeak(id);
    if (mRefs->dropInitial(mRefs->mStrong.fetch_add(1, std::memory_order_relaxed))) {
        mRefs->mBase->onFirstRef();
    }
}

void RefBase::decStrong(const void* id) const {
    weakref_impl* const refs = mRefs;
    if (refs->mStrong.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        refs->mBase->onLastStrongRef(id);
        if (!refs->isKeptByWeakReferences()) delete this;
    }
    // The counts are still there: this strong reference is a weak one as well.
    refs->decWeak(id);
}

void RefBase::forceIncStrong(const void* id) const {
    mRefs->incWeak(id);
    const int32_t before = mRefs->mStrong.fetch_add(1, std::memory_order_relaxed);
    if (mRefs->dropInitial(before) || before == 0) mRefs->mBase->onFirstRef();
}

int32_t RefBase::getStrongCount() const {
    return mRefs->mStrong.load(std::memory_order_relaxed);
}

RefBase* RefBase::weakref_type::refBase() const {
    return static_cast<const weakref_impl*>(this)->mBase;
}

void RefBase::weakref_type::incWeak(const void* /*id*/) {
    static_cast<weakref_impl*>(this)->mWeak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::weakref_type::decWeak(const void* id) {
    weakref_impl* const impl = static_cast<weakref_impl*>(this);
    if (impl->mWeak.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (impl->isKeptByWeakReferences()) {
        impl->mBase->onLastWeakRef(id);
        delete impl->mBase;
    } else if (impl->wasEverReferenced()) {
        delete impl;
    }
    // Otherwise the object was never held strongly: it still exists and owns its counts.
}

bool RefBase::weakref_type::attemptIncStrong(const void* id) {
    incWeak(id);
    weakref_impl* const impl = static_cast<weakref_impl*>(this);
    if (!impl->isKeptByWeakReferences()) {
        if (impl->incStrongIfAlive(true)) return true;
        decWeak(id);
        return false;
    }
    if (impl->incStrongIfAlive(false)) return true;
    if (!impl->mBase->onIncStrongAttempted(FIRST_INC_STRONG, id)) {
        decWeak(id);
        return false;
    }
    const int32_t before = impl->mStrong.fetch_add(1, std::memory_order_relaxed);
    // Another thread revived the object first: what onIncStrongAttempted() did counts double.
    if (!impl->dropInitial(before) && before != 0) impl->mBase->onLastStrongRef(id);
    return true;
}

bool RefBase::weakref_type::attemptIncWeak(const void* /*id*/) {
    weakref_impl* const impl = static_cast<weakref_impl*>(this);
    int32_t count = impl->mWeak.load(std::memory_order_relaxed);
    while (count > 0) {
        if (impl->mWeak.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
            return true;
        }
    }
    return false;
}

int32_t RefBase::weakref_type::getWeakCount() const {
    return static_cast<const weakref_impl*>(this)->mWeak.load(std::memory_order_relaxed);
}

void RefBase::weakref_type::printRefs() const {}

void RefBase::weakref_type::trackMe(bool /*enable*/, bool /*retain*/) {}

RefBase::weakref_type* RefBase::createWeak(const void* id) const {
    mRefs->incWeak(id);
    return mRefs;
}

RefBase::weakref_type* RefBase::getWeakRefs() const {
    return mRefs;
}

void RefBase::extendObjectLifetime(int32_t mode) {
    mRefs->mFlags.fetch_or(mode, std::memory_order_relaxed);
}

void RefBase::onFirstRef() {}

void RefBase::onLastStrongRef(const void* /*id*/) {}

bool RefBase::onIncStrongAttempted(uint32_t flags, const void* /*id*/) {
    return (flags & FIRST_INC_STRONG) != 0;
}

void RefBase::onLastWeakRef(const void* /*id*/) {}

// Containers tell where they move references to. Only tracking of owners would use that.
void RefBase::renameRefs(size_t /*n*/, const ReferenceRenamer& /*renamer*/) {}
void RefBase::renameRefId(weakref_type* /*ref*/, const void* /*old*/, const void* /*now*/) {}
void RefBase::renameRefId(RefBase* /*ref*/, const void* /*old*/, const void* /*now*/) {}

}  // namespace android
