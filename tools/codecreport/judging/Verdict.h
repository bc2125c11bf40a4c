// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Session.h"

namespace android::codecreport {

/** What a session's frames usually take, in milliseconds; refreshed now and then. */
struct Usual {
    std::array<int64_t, kStageCount> stageMs{};
    /** Input time minus due time, mostly negative. */
    int64_t inputMs = 0;
    bool known = false;
};

/**
 * Names what held a late or dropped frame up: of input, decryption, codec, message, application and
 * display the one that took longest beyond what is usual in its session.
 *
 * @param lateMs how much later than due the frame was shown or dropped
 * @param displayWaitMs what the display made its callers wait for around the frame, 0 for nothing
 */
Verdict judge(const Frame& frame, const Usual& usual, int64_t lateMs, int64_t displayWaitMs);

}  // namespace android::codecreport
