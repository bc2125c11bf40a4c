// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/logger/VendorStatistics.h>

#include <stdlib.h>
#include <string.h>

namespace android::logger {

long VendorStatistics::valueOf(const char* key) const {
    const ssize_t position = mText.find(key);
    if (position < 0) return 0;
    const size_t value = position + strlen(key) + 1;
    return value < mText.size() ? strtol(mText.c_str() + value, nullptr, 10) : 0;
}

}  // namespace android::logger
