// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

namespace android {

/**
 * A scalar that the codec's threads write while binder threads read it. Readers may see a stale
 * value, never a torn one, and no order with other members is implied. Loads and stores cost what
 * those of a plain member do; for that, an update is a load and a store and not one atomic step:
 * two threads that update the same member at once can lose one of the updates.
 */
template <typename T>
class Relaxed {
  public:
    constexpr Relaxed(T value = T{}) : mValue(value) {}
    Relaxed(const Relaxed&) = delete;
    T operator=(const Relaxed& other) { return *this = static_cast<T>(other); }

    operator T() const { return mValue.load(std::memory_order_relaxed); }

    T operator=(T value) {
        mValue.store(value, std::memory_order_relaxed);
        return value;
    }

    /** For unsigned types only, so that every update wraps and none overflows. */
    T operator+=(T value) {
        static_assert(T(-1) > T(0), "signed members are updated through wrapAdd()");
        return *this = static_cast<T>(static_cast<T>(*this) + value);
    }
    T operator++() { return *this += 1; }

  private:
    std::atomic<T> mValue;
};

}  // namespace android
