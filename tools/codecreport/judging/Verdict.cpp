// SPDX-License-Identifier: Apache-2.0
#include "judging/Verdict.h"

#include <stdio.h>

#include <algorithm>

namespace android::codecreport {

namespace {

// Less than this is the grain of the log's times and the scheduler's business.
constexpr int64_t kNoticeableMs = 4;
// Part of the delay that a stage must explain to be named.
constexpr double kShare = 0.25;

/** Judged without a session's own measure: a frame's time at 30 fps and the library's defaults. */
constexpr std::array<int64_t, kStageCount> kDefaultStageMs = {16, 30, 10, 33, 0};

struct Suspect {
    OldCause cause;
    int64_t tookMs;
    int64_t usualMs;
    int64_t excessMs() const { return tookMs - usualMs; }
};

std::string describe(const Suspect& suspect) {
    static constexpr const char* kTexts[] = {
            "input late: queued %lld ms later than usual for its due time",
            "decrypt: %lld ms before the input was queued, usually %lld",
            "codec: %lld ms in the component, usually %lld",
            "message delay: %lld ms from the component to the client, usually %lld",
            "app: held for %lld ms after it was ready, usually %lld",
            "display: queueing or dequeueing took %lld ms",
    };
    char text[160];
    const bool input = suspect.cause == OldCause::INPUT_LATE;
    snprintf(text, sizeof(text), kTexts[static_cast<size_t>(suspect.cause)],
             static_cast<long long>(input ? suspect.excessMs() : suspect.tookMs),
             static_cast<long long>(suspect.usualMs));
    return text;
}

}  // namespace

Verdict judge(const Frame& frame, const Usual& usual, int64_t lateMs, int64_t displayWaitMs) {
    static constexpr std::pair<Stage, OldCause> kStages[] = {{Stage::DECRYPT, OldCause::DECRYPT},
                                                             {Stage::CODEC, OldCause::CODEC},
                                                             {Stage::MESSAGE, OldCause::MESSAGE},
                                                             {Stage::APP, OldCause::APP}};
    if (frame.dropped && frame.dueUs == kNoTime) {
        return {OldCause::APP, "app: dropped before a frame was shown since start, seek or flush"};
    }
    if (frame.dropped && lateMs < kNoticeableMs) {
        return {OldCause::APP, "app: dropped although it was in time"};
    }
    std::array<Suspect, 6> suspects;
    size_t count = 0;
    if (displayWaitMs > 0) suspects[count++] = {OldCause::DISPLAY, displayWaitMs, 0};
    const int64_t inputUs = frame.announcedUs != kNoTime ? frame.announcedUs : frame.queuedUs;
    if (usual.known && inputUs != kNoTime && frame.dueUs != kNoTime) {
        suspects[count++] = {OldCause::INPUT_LATE, (inputUs - frame.dueUs) / 1000, usual.inputMs};
    }
    bool sawStages = false;
    for (const auto& [stage, cause] : kStages) {
        const int64_t took = frame.stageMs(stage);
        if (took == kNoTime) continue;
        const size_t index = static_cast<size_t>(stage);
        sawStages = true;
        suspects[count++] = {cause, took,
                             usual.known ? usual.stageMs[index] : kDefaultStageMs[index]};
    }
    const Suspect* worst = nullptr;
    for (size_t i = 0; i < count; ++i) {
        if (worst == nullptr || suspects[i].excessMs() > worst->excessMs()) worst = &suspects[i];
    }
    const int64_t least = std::max<int64_t>(kNoticeableMs, static_cast<int64_t>(kShare * lateMs));
    if (worst != nullptr && worst->excessMs() >= least) return {worst->cause, describe(*worst)};
    if (!sawStages) return {OldCause::UNKNOWN, "unknown: the log has no stage times of this frame"};
    if (frame.rendered && lateMs >= kNoticeableMs) {
        return {OldCause::APP, "app: every stage took its usual time, the frame was released late"};
    }
    if (frame.dropped)
        return {OldCause::APP, "app: dropped although every stage took its usual time"};
    return {OldCause::UNKNOWN, "nothing unusual in any stage"};
}

}  // namespace android::codecreport
