// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <android/log.h>

/**
 * Ends the process through the platform's fatal log unless `ok`. `line` and `condition` are what
 * crash reports of this library are grouped by; they stay as they are when the code around them
 * changes.
 */
#define LOGGER_CHECK(ok, line, condition)                                        \
    do {                                                                         \
        if (!(ok)) {                                                             \
            __android_log_assert("!(" condition ")", "MediaCodecLogger", "%s",   \
                                 "media/mediaCodecLogger/MediaCodecLogger:" line \
                                 " CHECK(" condition ") failed.");               \
        }                                                                        \
    } while (false)
