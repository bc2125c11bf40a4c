// SPDX-License-Identifier: Apache-2.0
#include <closed/PulseLog.h>

#include <errno.h>

#include "DataSet.h"
#include "MetricsSink.h"

using namespace android::hostplatform;

namespace {

const char* textOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace

int __pulse_log_ext_set_data(void* dataSet, const char* key, const char* value, int /*reserved*/) {
    if (dataSet == nullptr || key == nullptr) return -EINVAL;
    return addDataEntry(dataSet, key, textOrEmpty(value)) ? 0 : -ENOSPC;
}

int __pulse_log_ext_print_v2(const char* logName, const char* source, const char* schema,
                             const char* group, const char* name, const char* packageName,
                             const char* unit, const char* dimension, double value, void* dataSet,
                             int reserved, int flag) {
    MetricsRecord record;
    record.log = textOrEmpty(logName);
    record.source = textOrEmpty(source);
    record.schema = textOrEmpty(schema);
    record.group = textOrEmpty(group);
    record.name = textOrEmpty(name);
    record.packageName = textOrEmpty(packageName);
    record.unit = textOrEmpty(unit);
    record.dimension = textOrEmpty(dimension);
    record.value = value;
    if (dataSet != nullptr) record.data = readDataEntries(dataSet);
    record.reserved = reserved;
    record.flag = flag;
    sendMetricsRecord(record);
    return 0;
}
