// SPDX-License-Identifier: Apache-2.0
#include "judging/Timeline.h"

#include <math.h>
#include <stdlib.h>

#include <algorithm>
#include <utility>

namespace android::codecreport {

namespace {

constexpr size_t kAhead = 64;
constexpr size_t kBehind = 64;
constexpr int64_t kMaxStepUs = 5'000'000;
// So many pictures in a row that keep their distances make a schedule.
constexpr size_t kSteadyPictures = 9;
// The library takes this for a pause.
constexpr int64_t kPauseUs = 1'000'000;
constexpr size_t kPausePictures = 5;
// What a seek, a flush or the end of a session may take without a word.
constexpr int64_t kStandingUs = Standing::kLeastMs * 1000;
constexpr int64_t kNoiseUs = 4000;
// What is ready so little after a refresh still makes it.
constexpr int64_t kRefreshSlackUs = 1000;

}  // namespace

Timeline::Timeline(const Session& session, const Usual& usual, Sink sink)
    : mSession(session), mUsual(usual), mSink(std::move(sink)), mIncidents(usual) {}

void Timeline::add(const Frame& frame) {
    mFrames.push_back(frame);
    if (mFrames.size() - mAt > kAhead) walk();
}

void Timeline::walk() {
    const Frame& frame = mFrames[mAt];
    JudgedFrame judged;
    judged.frame = frame;
    if (frame.hasFate()) {
        if (mPicture.shownUs == kNoTime || frame.begins != Place::PLAYBACK) {
            begin(frame, &judged);
        } else if (frame.dropped) {
            onDropped(frame, &judged);
        } else {
            onRendered(frame, &judged);
        }
    }
    if (mSink) mSink(judged);
    ++mAt;
    if (mAt > kBehind) {
        mFrames.pop_front();
        --mAt;
    }
}

int64_t Timeline::shownAt(const Frame& frame) const {
    const int64_t earliestUs = asSoonAsUs(frame);
    const double period = mUsual.grid.periodUs;
    if (period == 0 || mRefreshUs == kNoTime || frame.displayUs >= frame.renderCallUs) {
        return earliestUs;
    }
    // What was asked for too late waits for the next refresh.
    return mRefreshUs +
           static_cast<int64_t>(ceil((earliestUs - mRefreshUs - kRefreshSlackUs) / period) *
                                period);
}

/** The one after it is shown at the same refresh. */
bool Timeline::isReplaced(const Frame& frame, int64_t shownUs) const {
    for (size_t i = mAt + 1; i < mFrames.size(); ++i) {
        const Frame& next = mFrames[i];
        if (!next.rendered) continue;
        if (next.begins != Place::PLAYBACK || next.ptsUs <= frame.ptsUs) return false;
        const int64_t shortest = std::min(mUsual.grid.refreshUs(), mUsual.stepUs) * 45 / 100;
        return shownAt(next) - shownUs < shortest;
    }
    return false;
}

bool Timeline::isFasterThanDisplay() const {
    return mUsual.grid.periodUs > 0 && mUsual.stepUs < mUsual.grid.periodUs * 0.98;
}

LateFrame Timeline::lateFrame(int64_t lateUs, int64_t inheritedUs, bool begins) const {
    return {mFrames, mAt, mScheduleUs, lateUs, inheritedUs, begins};
}

/** Puts a frame into its incident, with what it adds to the time lost. */
uint64_t Timeline::blame(int64_t dueUs, int64_t untilUs, int64_t lateUs, bool begins) {
    const bool isFirst = !mIncidents.isOpen();
    if (isFirst) mLateUs = 0;
    const int64_t inheritedUs = std::max<int64_t>(0, mLateUs);
    const LateFrame late = lateFrame(lateUs, inheritedUs, begins);
    // Just after the beginning is there as well.
    constexpr int64_t kNear = 12;
    const Place place = mPicturesSinceBegin < kNear ? mPlace : Place::PLAYBACK;
    const uint64_t id = mIncidents.add(late, dueUs, untilUs, place);
    if (lateUs > inheritedUs + kNoiseUs) mIncidents.lose(attribute(late, mUsual), late);
    mLateUs = lateUs;
    return id;
}

void Timeline::countStanding(int64_t fromUs, int64_t stoodUs) {
    const int64_t ms = stoodUs / 1000;
    if (ms < Standing::kLeastMs) return;
    ++mStanding.count;
    mStanding.totalMs += ms;
    if (ms <= mStanding.longestMs) return;
    mStanding.longestMs = ms;
    mStanding.longestAtUs = fromUs;
}

void Timeline::show(const Frame& frame, int64_t shownUs) {
    mPicture = {shownUs, frame.ptsUs, kNoTime};
    mLostSincePicture = false;
    ++mPicturesSinceBegin;
    ++mShown;
    if (frame.displayUs > frame.renderCallUs) mRefreshUs = frame.displayUs;
}

/** The first picture, or the first since playback began elsewhere. */
void Timeline::begin(const Frame& frame, JudgedFrame* judged) {
    if (frame.dropped) {
        judged->jank = Jank::DROPPED;
        // Without a line for each render, drops tell alone.
        if (mSession.rendered > 0 || frame.dueUs == kNoTime) return;
        mScheduleUs = frame.dueUs - frame.ptsUs;
        onDropped(frame, judged);
        return;
    }
    const int64_t shownUs = shownAt(frame);
    judged->shownUs = shownUs;
    const int64_t stepUs = frame.ptsUs - mPicture.ptsUs;
    if (mPicture.shownUs != kNoTime) {
        mPlace = frame.begins;
        // Playback that went on a second farther, or back, was sent there.
        if (mPlace == Place::FLUSH && (stepUs < 0 || stepUs > 1'000'000)) mPlace = Place::SEEK;
        mPicturesSinceBegin = 0;
        const int64_t dueUs = std::max(frame.begunUs, mPicture.shownUs + mUsual.stepUs);
        const int64_t stoodUs = shownUs - dueUs;
        mScheduleUs = dueUs - frame.ptsUs;
        if (stoodUs >= kStandingUs) {
            judged->incident = blame(dueUs, shownUs, stoodUs, true);
            judged->jank = Jank::STOOD;
            mIncidents.open().stoodMs += stoodUs / 1000;
            countStanding(dueUs, stoodUs);
            mPlaybackUs += stoodUs;
        } else {
            mIncidents.onGood(shownUs);
        }
    }
    mScheduleUs = shownUs - frame.ptsUs;
    const bool wasLate = frame.displayUs != kNoTime && shownUs - frame.displayUs <= kMaxStepUs;
    mAskedLateUs = wasLate ? std::max<int64_t>(0, shownUs - frame.displayUs) : 0;
    mOffsetsUs.clear();
    mLateUs = 0;
    judged->dueUs = shownUs;
    show(frame, shownUs);
}

void Timeline::onDropped(const Frame& frame, JudgedFrame* judged) {
    // Nobody drops for the first picture's being late but by the time that was asked for.
    const bool byAsked = mPicturesSinceBegin == 1 && mAskedLateUs > mUsual.toleranceUs;
    if (byAsked) mScheduleUs -= std::exchange(mAskedLateUs, 0);
    const int64_t dueUs = frame.ptsUs + mScheduleUs;
    judged->dueUs = dueUs;
    judged->jank = Jank::DROPPED;
    if (mPicture.nextPtsUs == kNoTime) mPicture.nextPtsUs = frame.ptsUs;
    mLostSincePicture = true;
    ++mNeverShown;
    const int64_t lateUs = frame.renderCallUs - dueUs;
    judged->incident =
            blame(std::min(dueUs, frame.renderCallUs), frame.renderCallUs, lateUs, false);
    ++mIncidents.open().neverShown;
    if (lateUs > kNoiseUs) return;
    // It could have been shown.
    Lost lost{};
    lost[static_cast<size_t>(Cause::APPLICATION)] = mUsual.stepUs;
    mIncidents.lose(lost, lateFrame(lateUs, 0, false));
}

void Timeline::onRendered(const Frame& frame, JudgedFrame* judged) {
    const int64_t shownUs = shownAt(frame);
    const int64_t dueUs = frame.ptsUs + mScheduleUs;
    const int64_t lateUs = shownUs - dueUs;
    judged->dueUs = dueUs;
    if (mPicture.nextPtsUs == kNoTime) mPicture.nextPtsUs = frame.ptsUs;
    if (isReplaced(frame, shownUs)) {
        judged->jank = Jank::REPLACED;
        ++mNeverShown;
        const bool tooFast = isFasterThanDisplay();
        const bool hadLead = frame.displayUs - frame.renderCallUs > kNoiseUs / 4;
        if (!tooFast && hadLead && lateUs <= mUsual.toleranceUs) {
            // Asked for in time, for the refresh of the next: the cadence's doing.
            ++mMistimed;
            return;
        }
        mLostSincePicture = true;
        const bool byRate = tooFast && lateUs <= mUsual.toleranceUs;
        judged->incident = blame(dueUs, shownUs, byRate ? 0 : lateUs, false);
        ++mIncidents.open().neverShown;
        if (!byRate) return;
        Lost lost{};
        lost[static_cast<size_t>(Cause::DISPLAY_RATE)] = mUsual.stepUs;
        mIncidents.lose(lost, lateFrame(lateUs, 0, false));
        return;
    }
    judged->shownUs = shownUs;
    const int64_t intervalUs = shownUs - mPicture.shownUs;
    const int64_t ownUs = std::clamp<int64_t>(mPicture.nextPtsUs - mPicture.ptsUs, 0, kMaxStepUs);
    const int64_t stoodUs = intervalUs - ownUs;
    intervalMs.add(intervalUs / 1000);
    const bool settles = mPicturesSinceBegin == 1 && stoodUs < kStandingUs && !mLostSincePicture;
    if (stoodUs > mUsual.toleranceUs && !settles) {
        if (isPause(frame, stoodUs)) {
            mOffsetsUs.clear();
            mScheduleUs = shownUs - frame.ptsUs;
            mLateUs = 0;
            judged->dueUs = shownUs;
            show(frame, shownUs);
            return;
        }
        onStood(frame, stoodUs, judged);
    } else {
        if (mIncidents.onGood(shownUs)) {
            // Whatever playback does since then is its schedule now.
            mOffsetsUs.clear();
            mScheduleUs = shownUs - frame.ptsUs;
        }
        if (lateUs > mUsual.toleranceUs) {
            judged->jank = Jank::LATE;
            if (mIncidents.isOpen()) {
                judged->incident = mIncidents.open().id;
                ++mIncidents.open().late;
            }
        }
        mLateUs = std::min(mLateUs, lateUs);
        const double period = mUsual.grid.refreshUs();
        if (llabs(stoodUs) > (mUsual.grid.isOwn ? period / 2 : period)) ++mMistimed;
    }
    lateMs.add(lateUs / 1000);
    mPlaybackUs += intervalUs;
    if (settles) mOffsetsUs.clear();
    keepSchedule(shownUs - frame.ptsUs);
    if (settles) mScheduleUs = shownUs - frame.ptsUs;
    show(frame, shownUs);
}

void Timeline::onStood(const Frame& frame, int64_t stoodUs, JudgedFrame* judged) {
    const int64_t overUs = judged->shownUs - stoodUs;
    int64_t lateUs = judged->shownUs - judged->dueUs;
    if (!mLostSincePicture && lateUs < stoodUs / 2) {
        // The picture before it was early: what counts is when its time was over.
        mScheduleUs = overUs - frame.ptsUs;
        judged->dueUs = overUs;
        lateUs = stoodUs;
    }
    judged->jank = Jank::STOOD;
    judged->incident = blame(overUs, judged->shownUs, lateUs, false);
    Incident& incident = mIncidents.open();
    incident.stoodMs += stoodUs / 1000;
    incident.startUs = std::min(incident.startUs, overUs);
    countStanding(overUs, stoodUs);
}

/**
 * Nothing was due in a gap if the next picture was there all the time and those after it go on from
 * where playback stopped, with none lost and no hurry.
 */
bool Timeline::isPause(const Frame& frame, int64_t stoodUs) const {
    if (stoodUs < kPauseUs || mLostSincePicture) return false;
    const int64_t overUs = shownAt(frame) - stoodUs;
    if (frame.outputUs != kNoTime && frame.outputUs > overUs) return false;
    // The client did nothing else meanwhile.
    LateFrame late = lateFrame(stoodUs, 0, false);
    late.scheduleUs = overUs - frame.ptsUs;
    const Lost lost = attribute(late, mUsual);
    const int64_t ownUs = lost[static_cast<size_t>(Cause::APPLICATION)] +
                          lost[static_cast<size_t>(Cause::UNKNOWN)];
    if (ownUs < stoodUs * 3 / 4) return false;
    size_t seen = 0;
    for (size_t i = mAt + 1; i < mFrames.size() && seen < kPausePictures; ++i, ++seen) {
        const Frame& next = mFrames[i];
        if (!next.rendered || next.begins != Place::PLAYBACK) return next.begins != Place::PLAYBACK;
        const int64_t hurryUs = (next.ptsUs - frame.ptsUs) - (asSoonAsUs(next) - asSoonAsUs(frame));
        if (hurryUs > mUsual.toleranceUs) return false;
    }
    return true;
}

/** Follows playback's schedule while it is steady; while it is not, the one from before holds. */
void Timeline::keepSchedule(int64_t offsetUs) {
    mOffsetsUs.push_back(offsetUs);
    if (mOffsetsUs.size() > kSteadyPictures) mOffsetsUs.pop_front();
    const auto [least, most] = std::minmax_element(mOffsetsUs.begin(), mOffsetsUs.end());
    const bool known = mOffsetsUs.size() == kSteadyPictures || !mIncidents.isOpen();
    if (!known || *most - *least > mUsual.toleranceUs) return;
    std::array<int64_t, kSteadyPictures> sorted{};
    const size_t count = mOffsetsUs.size();
    std::copy(mOffsetsUs.begin(), mOffsetsUs.end(), sorted.begin());
    std::nth_element(sorted.begin(), sorted.begin() + count / 2, sorted.begin() + count);
    mScheduleUs = sorted[count / 2];
}

void Timeline::finish(Judgement* judgement) {
    while (mAt < mFrames.size() && mFrames[mAt].hasFate()) walk();
    end();
    while (mAt < mFrames.size()) walk();
    mIncidents.finish(judgement);
    judgement->standing = mStanding;
    if (mSession.rendered == 0) return;
    judgement->shown = mShown;
    judgement->neverShown = mNeverShown;
    judgement->playbackMs = mPlaybackUs / 1000;
    if (mUsual.grid.periodUs > 0 || mUsual.grid.isOwn) judgement->cadence.mistimed = mMistimed;
}

/** The last picture: it may have stood until the log ended. */
void Timeline::end() {
    if (mPicture.shownUs == kNoTime) return;
    const Startup& startup = mSession.startup;
    const bool orderly = startup.stopBeginUs != kNoTime || mSession.reported;
    int64_t endUs = std::max(mSession.endUs, orderly ? kNoTime : mSession.logEndUs);
    if (startup.stopBeginUs != kNoTime) endUs = startup.stopBeginUs;
    const int64_t ownUs = mPicture.nextPtsUs == kNoTime
                                  ? mUsual.stepUs
                                  : std::min(mPicture.nextPtsUs - mPicture.ptsUs, kMaxStepUs);
    const int64_t dueUs = mPicture.shownUs + ownUs;
    const int64_t stoodUs = endUs - dueUs;
    if (stoodUs < kStandingUs) return;
    const Cause cause = causeOfEnd(dueUs, orderly);
    if (cause == Cause::COUNT) return;
    const bool pending = mAt < mFrames.size();
    if (!pending) mAt = mFrames.size() - 1;
    const LateFrame late = lateFrame(stoodUs, 0, false);
    mIncidents.add(late, dueUs, endUs, Place::END);
    Incident& incident = mIncidents.open();
    incident.place = Place::END;
    incident.openEnded = true;
    incident.stoodMs += stoodUs / 1000;
    if (!mLostSincePicture) {
        Lost lost{};
        lost[static_cast<size_t>(cause)] = stoodUs;
        mIncidents.lose(lost, late);
        mIncidents.explain(cause, evidenceOfEnd(cause));
    }
    countStanding(dueUs, stoodUs);
    mPlaybackUs += stoodUs;
    if (!pending) ++mAt;
}

std::string Timeline::evidenceOfEnd(Cause cause) const {
    const size_t pending = mFrames.size() - mAt;
    switch (cause) {
        case Cause::APPLICATION:
            return "pictures were ready and none was released any more";
        case Cause::CODEC:
            return "nothing came out of the component any more, with " + std::to_string(pending) +
                   " frames in it";
        case Cause::INPUT_STARVED:
            return "no input came any more";
        case Cause::MESSAGE_DELAY:
            return "what the component had done did not reach the client any more";
        default:
            return "no picture came any more";
    }
}

/** Why no picture came any more; COUNT: none was due. */
Cause Timeline::causeOfEnd(int64_t dueUs, bool orderly) const {
    // The drops have said it.
    if (mLostSincePicture) return Cause::UNKNOWN;
    int64_t inside = 0;
    const Frame* next = nullptr;
    for (size_t i = mAt; i < mFrames.size(); ++i) {
        const Frame& frame = mFrames[i];
        if (frame.ptsUs > mPicture.ptsUs && (next == nullptr || frame.ptsUs < next->ptsUs)) {
            next = &frame;
        }
        if (frame.codecOutUs == kNoTime && frame.outputUs == kNoTime) ++inside;
    }
    if (next == nullptr) {
        if (mSession.ended) return Cause::COUNT;
        return mSession.inputs > 0 ? Cause::INPUT_STARVED : Cause::UNKNOWN;
    }
    if (next->outputUs != kNoTime && next->outputUs <= dueUs + kStandingUs) {
        // It was there to be shown. Who stops a session may have paused it before.
        return orderly ? Cause::COUNT : Cause::APPLICATION;
    }
    if (next->codecOutUs != kNoTime) return Cause::MESSAGE_DELAY;
    const bool isFull = mUsual.insideBefore >= 2 ? inside >= 0.6 * mUsual.insideBefore : inside > 0;
    return isFull ? Cause::CODEC : Cause::INPUT_STARVED;
}

}  // namespace android::codecreport
