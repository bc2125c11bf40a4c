// SPDX-License-Identifier: Apache-2.0
// What the fuzz targets share.
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <string_view>

/** Ends the process, which the fuzzer takes for a finding, unless the invariant holds. */
#define FUZZ_CHECK(condition, ...)                                                       \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            fprintf(stderr, "%s:%d: does not hold: %s", __FILE__, __LINE__, #condition); \
            fprintf(stderr, "\n" __VA_ARGS__);                                           \
            abort();                                                                     \
        }                                                                                \
    } while (false)

namespace android::fuzz {

/** Takes an input apart from its beginning on; behind its end all is 0 and empty. */
class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    bool atEnd() const { return mSize == 0; }
    size_t left() const { return mSize; }

    /** A number of the width of T, little-endian. */
    template <typename T>
    T number() {
        T value = 0;
        const size_t size = std::min(sizeof(T), mSize);
        if (size > 0) memcpy(&value, mData, size);
        skip(size);
        return value;
    }
    uint8_t byte() { return number<uint8_t>(); }
    bool flag() { return (byte() & 1) != 0; }

    /** Up to `size` bytes. */
    std::string_view bytes(size_t size) {
        const std::string_view taken(reinterpret_cast<const char*>(mData), std::min(size, mSize));
        skip(taken.size());
        return taken;
    }
    /** A length of one byte and so many bytes. */
    std::string_view text() { return bytes(byte()); }
    std::string_view rest() { return bytes(mSize); }

  private:
    void skip(size_t size) {
        mData += size;
        mSize -= size;
    }

    const uint8_t* mData;
    size_t mSize;
};

}  // namespace android::fuzz
