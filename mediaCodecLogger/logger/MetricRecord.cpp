// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/MetricRecord.h>

#include <string.h>

#include <closed/PulseLog.h>

namespace android::logger {

void MetricData::set(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries) __pulse_log_ext_set_data(mBlock, entry.key, entry.value, 0);
}

void MetricData::clear() {
    memset(mBlock, 0, kHeadSize);
}

void sendMetric(const MetricRecord& record, const char* packageName, const char* dimension,
                double value, MetricData* data) {
    __pulse_log_ext_print_v2("Vlog", "fsl0vcpd", record.schema, "MMSW", record.name, packageName,
                             record.unit, dimension, value, data ? data->block() : nullptr, 0,
                             record.flag);
    if (data != nullptr) data->clear();
}

}  // namespace android::logger
