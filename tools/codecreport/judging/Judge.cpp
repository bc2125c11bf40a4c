// SPDX-License-Identifier: Apache-2.0
#include "judging/Judge.h"

#include <algorithm>

#include "judging/Timeline.h"
#include "judging/Verdict.h"

namespace android::codecreport {

namespace {

/** For drawing: days are off every scale. */
int32_t narrow(int64_t ms) {
    return static_cast<int32_t>(std::clamp<int64_t>(ms, -1'000'000'000, 1'000'000'000));
}

FramePoint pointOf(const JudgedFrame& judged) {
    const Frame& frame = judged.frame;
    FramePoint point = {frame.lastUs(), frame.ptsUs, {}, kNoStage, frame.dropped};
    for (size_t i = 0; i < kStageCount; ++i) {
        const int64_t ms = frame.stageMs(static_cast<Stage>(i));
        point.stageMs[i] = ms == kNoTime ? kNoStage : narrow(ms);
    }
    const int64_t endUs = judged.shownUs != kNoTime ? judged.shownUs : frame.renderCallUs;
    if (judged.dueUs != kNoTime && endUs != kNoTime) {
        point.lateMs = narrow((endUs - judged.dueUs) / 1000);
    }
    return point;
}

}  // namespace

void judge(const FrameStore& store, Session* session) {
    Judgement judgement;
    session->frames = FramePoints();
    if (session->isVideo()) {
        const Usual usual = usualOf(*session, store);
        Timeline timeline(*session, usual, [session](const JudgedFrame& judged) {
            session->frames.add(pointOf(judged));
        });
        store.read(session->id, [&timeline](const Frame& frame) { timeline.add(frame); });
        timeline.finish(&judgement);
        session->frameIntervalMs = timeline.intervalMs;
        session->lateMs = timeline.lateMs;
        addCadence(usual, &judgement);
    }
    addWords(*session, &judgement);
    session->judgement = std::move(judgement);
}

void forEachFrame(const FrameStore& store, const Session& session,
                  const std::function<void(const JudgedFrame&)>& onFrame) {
    const Usual usual = usualOf(session, store);
    Timeline timeline(session, usual, onFrame);
    store.read(session.id, [&timeline](const Frame& frame) { timeline.add(frame); });
    Judgement ignored;
    timeline.finish(&ignored);
}

}  // namespace android::codecreport
