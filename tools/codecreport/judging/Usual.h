// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>

#include "model/FrameStore.h"
#include "model/Session.h"

namespace android::codecreport {

/** The display's grid of refreshes, as far as the render times tell. */
struct Grid {
    /** 0: they do not tell. */
    double periodUs = 0;
    double jitterMs = 0;
    /** The pictures' own rhythm is the only one that they show. */
    bool isOwn = false;
    /** A refresh, or what one mostly takes. */
    int64_t refreshUs() const { return periodUs > 0 ? static_cast<int64_t>(periodUs) : 16'667; }
};

/** What a whole session's frames usually take, in microseconds. */
struct Usual {
    /** From timestamp to timestamp. */
    int64_t stepUs = 0;
    std::array<int64_t, kStageCount> stageUs{};
    bool hasStages = false;
    bool hasDecrypt = false;
    /** How long before its display the component is done with a frame. */
    int64_t outLeadUs = 0;
    /** Between two frames the component works, and then waits for input. */
    int64_t workUs = 0;
    int64_t idleUs = 0;
    /** Frames that the component has when another one is queued; -1: not known. */
    int64_t insideBefore = -1;
    /** Within its work, for buffers of the display. */
    int64_t dequeueWaitUs = 0;
    Grid grid;
    /** How much longer than its time a picture may stand in steady playback. */
    int64_t toleranceUs = 0;
};

/** When the display shows it, were there no other frame. */
int64_t asSoonAsUs(const Frame& frame);

Usual usualOf(const Session& session, const FrameStore& store);

}  // namespace android::codecreport
