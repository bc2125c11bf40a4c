// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <limits>

#include "model/Incident.h"

/** One frame on its way. Times are microseconds on the log's timeline. */
namespace android::codecreport {

constexpr int64_t kNoTime = std::numeric_limits<int64_t>::min();

enum class Stage { DECRYPT, CODEC, MESSAGE, APP, LEAD, COUNT };
constexpr size_t kStageCount = static_cast<size_t>(Stage::COUNT);
/** "decrypt", "codec", "message", "app", "lead" */
const char* toString(Stage stage);

/** One frame on its way through the codec; kNoTime for what no line told. */
struct Frame {
    int64_t ptsUs = 0;
    int64_t number = -1;
    int64_t sizeBytes = -1;
    int64_t announcedUs = kNoTime;
    int64_t queuedUs = kNoTime;
    int64_t codecInUs = kNoTime;
    int64_t codecOutUs = kNoTime;
    int64_t outputUs = kNoTime;
    /** When it was rendered or dropped. */
    int64_t renderCallUs = kNoTime;
    /** When the display was to show it; the render call where the client gave no clock time. */
    int64_t displayUs = kNoTime;
    /** At most one is set; neither: it was on its way when the log ended. */
    bool rendered = false;
    bool dropped = false;
    /** Frames that the component had when this one was queued, and besides when it was done with
     * it; -1: not known. */
    int64_t insideBefore = -1;
    int64_t inside = -1;
    /** What the component waited for a buffer of the display to put it into. */
    int64_t dequeueWaitUs = 0;
    /**
     * What queueing others to the display and decrypting others took while the client, or the
     * message to it, had the frame.
     */
    int64_t queueWaitUs = 0;
    int64_t decryptWaitUs = 0;
    int64_t messageQueueWaitUs = 0;
    int64_t messageDecryptWaitUs = 0;
    /** It is the first since playback began elsewhere: START, SEEK or FLUSH; and since when. */
    Place begins = Place::PLAYBACK;
    int64_t begunUs = kNoTime;
    /** When a drop line says it was due, where renders have no lines. */
    int64_t dueUs = kNoTime;

    bool hasFate() const { return rendered || dropped; }
    /** Milliseconds in the stage, or kNoTime. */
    int64_t stageMs(Stage stage) const;
    /** From the first to the last time that is known. */
    int64_t firstUs() const;
    int64_t lastUs() const;
};

/** A frame and how it fared. */
struct JudgedFrame {
    Frame frame;
    /** By the schedule that playback kept; kNoTime where there is none yet. */
    int64_t dueUs = kNoTime;
    /** When the display showed it; kNoTime: never. */
    int64_t shownUs = kNoTime;
    Jank jank = Jank::NONE;
    /** The incident that it belongs to, or 0. */
    uint64_t incident = 0;
};

}  // namespace android::codecreport
