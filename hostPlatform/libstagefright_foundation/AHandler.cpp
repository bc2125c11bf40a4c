// SPDX-License-Identifier: Apache-2.0
#include <time.h>

#include <media/stagefright/foundation/AHandler.h>

namespace android {

int64_t ALooper::GetNowUs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * INT64_C(1000000) + now.tv_nsec / 1000;
}

}  // namespace android
