// SPDX-License-Identifier: Apache-2.0
#pragma once

/**
 * The two functions of the device's metrics service, which libzephralog defines. That library comes
 * without a header, so the prototypes stand here. Both are plain C functions with fixed arguments;
 * neither reports a failure that a caller could act on.
 */
extern "C" {

/**
 * Adds one text key and text value to a data set: a block of 4864 bytes that the caller owns,
 * zeroed before its first use. Zeroing its first 16 bytes empties it again. The last argument is
 * always 0.
 */
int __pulse_log_ext_set_data(void* dataSet, const char* key, const char* value, int reserved);

/**
 * Sends one record. `dataSet` is null for a record without data entries; `reserved` is always 0.
 */
int __pulse_log_ext_print_v2(const char* logName, const char* source, const char* schema,
                             const char* group, const char* name, const char* packageName,
                             const char* unit, const char* dimension, double value, void* dataSet,
                             int reserved, int flag);

}  // extern "C"
