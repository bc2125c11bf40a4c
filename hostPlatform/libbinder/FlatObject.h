// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace android {

// A binder object as it lies in a Parcel, in the layout of a device's kernel driver. Packed,
// because an object may lie at any multiple of four bytes.
struct __attribute__((packed)) flat_binder_object {
    uint32_t type;
    uint32_t flags;
    uint64_t binder;  // local: address of the weak references; otherwise the handle or descriptor
    uint64_t cookie;  // local: the BBinder*; remote: 0; descriptor: 1 if the Parcel closes it
};
static_assert(sizeof(flat_binder_object) == 24);

constexpr uint32_t kTypeBinder = 0x73622a85;  // of this process, or null
constexpr uint32_t kTypeHandle = 0x73682a85;  // of another process
constexpr uint32_t kTypeFd = 0x66642a85;      // a file descriptor

constexpr uint32_t kFlatAcceptsFds = 0x100;
constexpr uint32_t kFlatMinPriority = 0x13;
constexpr uint32_t kFlatFdPriority = 0x7f;
constexpr uint32_t kFlatSecurityContext = 0x1000;

// Take and drop the strong reference that a Parcel holds for each object in its table; the second
// closes a descriptor that is the Parcel's.
void acquireFlatObject(const uint8_t* at, const void* owner);
void releaseFlatObject(const uint8_t* at, const void* owner);

}  // namespace android
