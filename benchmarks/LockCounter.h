// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

namespace android::bench {

/** How many mutexes and reader-writer locks the calling thread has taken. */
int64_t locksTaken();

}  // namespace android::bench
