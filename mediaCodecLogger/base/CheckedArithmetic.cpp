// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/base/CheckedArithmetic.h>

#include <inttypes.h>

#include <android/log.h>

namespace android {

void dieOfOverflow(int64_t a, char operation, int64_t b) {
    __android_log_assert("overflow", "ZMediaAnalyticV",
                         "arithmetic overflow: %" PRId64 " %c %" PRId64, a, operation, b);
}

}  // namespace android
