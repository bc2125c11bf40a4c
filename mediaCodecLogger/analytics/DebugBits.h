// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android::analytics {

/**
 * Bits of "mediaanalytic.debug". Where there is a second bit, the first counts for video trackers
 * and the second for the others; a log bit without a second one counts for video alone.
 */
enum DebugBits : int32_t {
    DEBUG_INPUT = 0x1,
    DEBUG_INPUT_OTHER = 0x10000,
    DEBUG_OUTPUT = 0x2,
    DEBUG_OUTPUT_OTHER = 0x20000,
    DEBUG_RENDER = 0x4,
    DEBUG_DEQUEUE = 0x8,
    DEBUG_TRACE = 0x10,
    DEBUG_QUEUE = 0x20,
    DEBUG_BYTES = 0x40,
    DEBUG_BYTES_OTHER = 0x40000,
    DUMP_INPUT = 0x80,
    DUMP_INPUT_OTHER = 0x80000,
    DUMP_DECRYPTED = 0x100,
    DUMP_DECRYPTED_OTHER = 0x100000,
    DUMP_OUTPUT = 0x200,
    DUMP_OUTPUT_OTHER = 0x200000,
    DEBUG_TIMELINE = 0x400,
    /** A mask of at least this value logs the buffer counts whenever they are told. */
    DEBUG_BUFFER_COUNTS = 0x10000,
};

}  // namespace android::analytics
