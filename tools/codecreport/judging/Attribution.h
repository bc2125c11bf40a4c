// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <deque>
#include <string>

#include "judging/Usual.h"

namespace android::codecreport {

/** Lost time by cause, in microseconds. */
using Lost = std::array<int64_t, kCauseCount>;

/** A frame that was not in time, and its neighbours. */
struct LateFrame {
    const std::deque<Frame>& frames;
    size_t at;
    /** Its schedule: due time minus timestamp. */
    int64_t scheduleUs;
    /** How late it was shown or given up, and how much of that it inherits from those before. */
    int64_t lateUs;
    int64_t inheritedUs;
    /** Nothing was in the codec when it was due: playback began here. */
    bool begins;

    const Frame& frame() const { return frames[at]; }
    int64_t dueUs() const { return frame().ptsUs + scheduleUs; }
};

/**
 * Says where a frame's lateness came from, stage by stage from the display back to the input: a
 * stage answers for what exceeds the lateness that the frame came to it with. What a stage does
 * only because another one holds it up (a component without input or without buffers, a client
 * whose thread decrypts) counts for that one.
 */
Lost attribute(const LateFrame& late, const Usual& usual);

/** The numbers of the frame that speak for a cause. */
std::string evidence(Cause cause, const LateFrame& late, const Usual& usual);

}  // namespace android::codecreport
