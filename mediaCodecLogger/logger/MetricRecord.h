// SPDX-License-Identifier: Apache-2.0
// Records of the device's metrics service; private to MediaCodecLogger.
#pragma once

#include <stddef.h>

#include <initializer_list>

namespace android::logger {

/** What is fixed of a record. The schema id tells the service how to read it. */
struct MetricRecord {
    const char* schema;
    const char* name;
    const char* unit;
    int flag;
};

/**
 * Text entries that a record carries besides its value. One block serves any number of records; it
 * lives on the stack, because the service wants it owned by the caller.
 */
class MetricData {
  public:
    struct Entry {
        const char* key;
        const char* value;
    };

    void set(std::initializer_list<Entry> entries);
    void clear();
    void* block() { return mBlock; }

  private:
    // Its layout is the metrics library's; zeroing the head empties it.
    static constexpr size_t kBlockSize = 4864;
    static constexpr size_t kHeadSize = 16;
    alignas(16) unsigned char mBlock[kBlockSize] = {};
};

/**
 * Sends one record. `data` may be null; otherwise it is sent with the record and then empty again.
 * `dimension` classifies the value, mostly by codec.
 */
void sendMetric(const MetricRecord& record, const char* packageName, const char* dimension,
                double value, MetricData* data = nullptr);

}  // namespace android::logger
