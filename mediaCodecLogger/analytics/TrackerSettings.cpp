// SPDX-License-Identifier: Apache-2.0
#include <mediaCodecLogger/analytics/TrackerSettings.h>

#include <stdlib.h>
#include <string.h>

#include <cutils/properties.h>

namespace android::analytics {

namespace {

constexpr struct {
    const char* property;
    int32_t TrackerSettings::*member;
    int32_t value;
} kDefaults[] = {
        {"mediaanalytic.maxqueuesize", &TrackerSettings::mMaxQueueSize, 128},
        {"mediaanalytic.maxdequeuetime", &TrackerSettings::mMaxDequeueTime, 80},
        {"mediaanalytic.maxqueuetime", &TrackerSettings::mMaxQueueTime, 10},
        {"mediaanalytic.maxmsgdelaytime", &TrackerSettings::mMaxMsgDelayTime, 10},
        {"mediaanalytic.maxdecodetime", &TrackerSettings::mMaxDecodeTime, 30},
        {"mediaanalytic.vsyncperiod", &TrackerSettings::mVsyncPeriod, 16},
        {"mediaanalytic.maxdecrypttime", &TrackerSettings::mMaxDecryptTime, 16},
        {"mediaanalytic.maxerrorframe", &TrackerSettings::mMaxErrorFrame, 16},
};

/** The debug mask; only a leading "0x" makes it hexadecimal. */
int32_t readDebugMask() {
    char value[PROPERTY_VALUE_MAX];
    if (property_get("mediaanalytic.debug", value, nullptr) <= 0) return 0;
    const int base = strncmp(value, "0x", 2) == 0 ? 16 : 10;
    return static_cast<int32_t>(strtol(value, nullptr, base));
}

}  // namespace

TrackerSettings::TrackerSettings() {
    for (const auto& [property, member, value] : kDefaults) {
        this->*member = property_get_int32(property, value);
    }
    mDebug = readDebugMask();
}

int32_t readMaxEarlyTime() {
    return property_get_int32("mediaanalytic.maxearlytime", 200);
}

}  // namespace android::analytics
