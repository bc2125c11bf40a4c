// SPDX-License-Identifier: Apache-2.0
#include "model/Frame.h"

#include <algorithm>

namespace android::codecreport {

namespace {

int64_t spanMs(int64_t fromUs, int64_t toUs) {
    return fromUs == kNoTime || toUs == kNoTime ? kNoTime : (toUs - fromUs) / 1000;
}

}  // namespace

const char* toString(Stage stage) {
    static constexpr const char* kNames[] = {"decrypt", "codec", "message", "app", "lead"};
    return kNames[static_cast<size_t>(stage)];
}

int64_t Frame::stageMs(Stage stage) const {
    switch (stage) {
        case Stage::DECRYPT:
            return spanMs(announcedUs, queuedUs);
        case Stage::CODEC:
            return spanMs(codecInUs, codecOutUs);
        case Stage::MESSAGE:
            return spanMs(codecOutUs, outputUs);
        case Stage::APP:
            return spanMs(outputUs, renderCallUs);
        case Stage::LEAD:
            return rendered ? spanMs(renderCallUs, displayUs) : kNoTime;
        default:
            return kNoTime;
    }
}

int64_t Frame::firstUs() const {
    for (int64_t time : {announcedUs, queuedUs, codecInUs, codecOutUs, outputUs, renderCallUs}) {
        if (time != kNoTime) return time;
    }
    return displayUs;
}

int64_t Frame::lastUs() const {
    return std::max(
            {announcedUs, queuedUs, codecInUs, codecOutUs, outputUs, renderCallUs, displayUs});
}

}  // namespace android::codecreport
