// SPDX-License-Identifier: Apache-2.0
#include "DataSet.h"

#include <stdint.h>
#include <string.h>

#include <algorithm>

namespace android::hostplatform {

namespace {

constexpr size_t kDataSetSize = 4864;
/** A 64-bit count of the bytes in use, then zeroes: clearing the head empties the set. */
constexpr size_t kHeadSize = 16;
constexpr size_t kCapacity = kDataSetSize - kHeadSize;

// Each entry is its key and its value, both with their NUL.

size_t usedBytes(const void* dataSet) {
    uint64_t used = 0;
    memcpy(&used, dataSet, sizeof(used));
    // The block is the caller's: a foreign count must not lead out of it.
    return std::min<uint64_t>(used, kCapacity);
}

/** Takes one NUL-ended text from the front of [*at, end); what lacks its NUL ends at end. */
std::string takeText(const char** at, const char* end) {
    std::string text(*at, strnlen(*at, end - *at));
    *at += std::min<size_t>(text.size() + 1, end - *at);
    return text;
}

}  // namespace

bool addDataEntry(void* dataSet, const char* key, const char* value) {
    const size_t used = usedBytes(dataSet);
    const size_t keySize = strlen(key) + 1;
    const size_t valueSize = strlen(value) + 1;
    if (keySize > kCapacity || valueSize > kCapacity || keySize + valueSize > kCapacity - used) {
        return false;
    }
    char* const entry = static_cast<char*>(dataSet) + kHeadSize + used;
    memcpy(entry, key, keySize);
    memcpy(entry + keySize, value, valueSize);
    const uint64_t nowUsed = used + keySize + valueSize;
    memcpy(dataSet, &nowUsed, sizeof(nowUsed));
    return true;
}

DataEntries readDataEntries(const void* dataSet) {
    DataEntries entries;
    const char* at = static_cast<const char*>(dataSet) + kHeadSize;
    const char* const end = at + usedBytes(dataSet);
    while (at < end) {
        std::string key = takeText(&at, end);
        std::string value = takeText(&at, end);
        const auto known = std::find_if(entries.begin(), entries.end(),
                                        [&key](const auto& entry) { return entry.first == key; });
        if (known != entries.end()) {
            known->second = std::move(value);
        } else {
            entries.emplace_back(std::move(key), std::move(value));
        }
    }
    return entries;
}

}  // namespace android::hostplatform
