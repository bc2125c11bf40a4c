// SPDX-License-Identifier: Apache-2.0
#include <tests/support/MetricsCapture.h>

#include <tuple>
#include <utility>

namespace android::hostplatform {

namespace {

auto fieldsOf(const MetricsRecord& record) {
    return std::tie(record.log, record.source, record.schema, record.group, record.name,
                    record.packageName, record.unit, record.dimension, record.value, record.data,
                    record.reserved, record.flag);
}

}  // namespace

bool operator==(const MetricsRecord& a, const MetricsRecord& b) {
    return fieldsOf(a) == fieldsOf(b);
}

std::ostream& operator<<(std::ostream& out, const MetricsRecord& record) {
    return out << toJson(record);
}

}  // namespace android::hostplatform

namespace android::test {

using hostplatform::MetricsRecord;

MetricsCapture::MetricsCapture() {
    hostplatform::setMetricsListener([this](const MetricsRecord& record) {
        std::lock_guard<std::mutex> guard(mLock);
        mRecords.push_back(record);
    });
}

MetricsCapture::~MetricsCapture() {
    hostplatform::setMetricsListener(nullptr);
}

std::vector<MetricsRecord> MetricsCapture::records() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mRecords;
}

std::vector<MetricsRecord> MetricsCapture::take() {
    std::lock_guard<std::mutex> guard(mLock);
    return std::exchange(mRecords, {});
}

}  // namespace android::test
