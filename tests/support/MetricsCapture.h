// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <ostream>
#include <vector>

#include <hostplatform/MetricsSink.h>

namespace android::hostplatform {

bool operator==(const MetricsRecord& a, const MetricsRecord& b);

/** As the line of JSON that the sink would write. */
std::ostream& operator<<(std::ostream& out, const MetricsRecord& record);

}  // namespace android::hostplatform

namespace android::test {

/** Keeps the metrics records of the process while it exists. At most one at a time. Thread-safe. */
class MetricsCapture {
  public:
    MetricsCapture();
    ~MetricsCapture();

    MetricsCapture(const MetricsCapture&) = delete;
    MetricsCapture& operator=(const MetricsCapture&) = delete;

    /** The records so far, oldest first. */
    std::vector<hostplatform::MetricsRecord> records() const;
    /** The same, without keeping them. */
    std::vector<hostplatform::MetricsRecord> take();

  private:
    mutable std::mutex mLock;
    std::vector<hostplatform::MetricsRecord> mRecords;
};

}  // namespace android::test
