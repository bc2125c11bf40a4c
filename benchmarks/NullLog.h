// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android/log.h>

namespace android::bench {

/**
 * From now on liblog formats each line and throws it away: what a line costs beyond that is the
 * sink's and measured on its own.
 */
inline void discardLog() {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
}

/** The sink that a host's liblog starts with. */
inline void logToStandardError() {
    __android_log_set_logger(__android_log_stderr_logger);
}

}  // namespace android::bench
