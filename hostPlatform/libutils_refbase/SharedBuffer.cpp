// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "SharedBuffer"
#include <log/log.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <atomic>
#include <new>

// What copies of a String8, String16 or Vector share, compiled with the sanitizer. The class is
// private to libutils, which reaches the fields itself in places: their layout is libutils' own.

namespace android {

class SharedBuffer {
  public:
    /** release() then leaves the storage of the last owner to the caller. */
    static constexpr uint32_t kKeepStorage = 1;

    /** Storage with one owner, or null without memory. */
    static SharedBuffer* alloc(size_t size);
    static void dealloc(const SharedBuffer* released);

    void acquire() const;
    /** Returns the number of owners before. */
    int32_t release(uint32_t flags = 0) const;

    // The caller's share becomes storage of its own: in place for the only owner, else a copy.
    SharedBuffer* edit() const;
    SharedBuffer* editResize(size_t size) const;
    /** Null for one of several owners. */
    SharedBuffer* attemptEdit() const;
    /** The caller's share becomes new storage without contents. */
    SharedBuffer* reset(size_t size) const;

  private:
    void* data() const { return const_cast<SharedBuffer*>(this + 1); }
    SharedBuffer* copy(size_t size) const;

    mutable std::atomic<int32_t> mOwners;
    size_t mSize;
    [[maybe_unused]] uint32_t mReserved;
    /** Zeroed for the classes that keep flags here. */
    uint32_t mFlags;
};

static_assert(sizeof(SharedBuffer) == 24);

SharedBuffer* SharedBuffer::alloc(size_t size) {
    LOG_ALWAYS_FATAL_IF(size >= SIZE_MAX - sizeof(SharedBuffer), "alloc(%zu)", size);
    void* const memory = malloc(sizeof(SharedBuffer) + size);
    if (memory == nullptr) return nullptr;
    auto* const buffer = new (memory) SharedBuffer;
    buffer->mOwners.store(1, std::memory_order_relaxed);
    buffer->mSize = size;
    buffer->mFlags = 0;
    return buffer;
}

void SharedBuffer::dealloc(const SharedBuffer* released) {
    free(const_cast<SharedBuffer*>(released));
}

void SharedBuffer::acquire() const {
    mOwners.fetch_add(1, std::memory_order_relaxed);
}

int32_t SharedBuffer::release(uint32_t flags) const {
    const int32_t before = mOwners.fetch_sub(1, std::memory_order_acq_rel);
    if (before == 1 && (flags & kKeepStorage) == 0) dealloc(this);
    return before;
}

SharedBuffer* SharedBuffer::edit() const {
    return editResize(mSize);
}

SharedBuffer* SharedBuffer::editResize(size_t size) const {
    if (SharedBuffer* const own = attemptEdit(); own != nullptr && own->mSize == size) return own;
    return copy(size);
}

SharedBuffer* SharedBuffer::attemptEdit() const {
    const bool isOnlyOwner = mOwners.load(std::memory_order_acquire) == 1;
    return isOnlyOwner ? const_cast<SharedBuffer*>(this) : nullptr;
}

SharedBuffer* SharedBuffer::reset(size_t size) const {
    SharedBuffer* const fresh = alloc(size);
    if (fresh != nullptr) release();
    return fresh;
}

SharedBuffer* SharedBuffer::copy(size_t size) const {
    SharedBuffer* const fresh = alloc(size);
    if (fresh == nullptr) return nullptr;
    memcpy(fresh->data(), data(), std::min(size, mSize));
    release();
    return fresh;
}

}  // namespace android
