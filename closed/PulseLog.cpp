// SPDX-License-Identifier: Apache-2.0
// Stands in for libzephralog in a tree that lacks it: what would go to the metrics service goes to
// the system log, the data entries of a record before it and under the same address.
#include <android/log.h>

#include <closed/PulseLog.h>

static constexpr char kTag[] = "PulseLog";

int __pulse_log_ext_set_data(void* dataSet, const char* key, const char* value, int /*reserved*/) {
    return __android_log_print(ANDROID_LOG_INFO, kTag, "%p %s=%s", dataSet, key, value);
}

int __pulse_log_ext_print_v2(const char* logName, const char* source, const char* schema,
                             const char* group, const char* name, const char* packageName,
                             const char* unit, const char* dimension, double value, void* dataSet,
                             int /*reserved*/, int flag) {
    return __android_log_print(ANDROID_LOG_INFO, kTag, "%s/%s/%s %s %s: %s [%s] %f %s, data %p, %d",
                               logName, source, group, schema, name, packageName, dimension, value,
                               unit, dataSet, flag);
}
