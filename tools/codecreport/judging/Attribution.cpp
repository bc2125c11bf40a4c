// SPDX-License-Identifier: Apache-2.0
#include "judging/Attribution.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <vector>

namespace android::codecreport {

namespace {

// Neighbours that a cause is looked for in: what a pipeline holds.
constexpr size_t kReach = 48;
// Below this a stage's times are noise.
constexpr int64_t kNoiseUs = 4000;
// A component with no more than this part of what it usually has is short of input.
constexpr double kStarvedPart = 0.7;

int64_t& of(Lost* lost, Cause cause) {
    return (*lost)[static_cast<size_t>(cause)];
}

int64_t excessUs(const Frame& frame, const Usual& usual, Stage stage) {
    const int64_t ms = frame.stageMs(stage);
    if (ms == kNoTime) return 0;
    return std::max<int64_t>(0, ms * 1000 - usual.stageUs[static_cast<size_t>(stage)]);
}

/**
 * When the component had all that it needs to be done with a frame. That may be input behind it:
 * what came while less than usual was inside was waited for, and where there is never more than
 * one frame inside, the next one.
 */
int64_t neededUs(const LateFrame& late, const Frame& frame, const Usual& usual) {
    int64_t neededUs = frame.queuedUs;
    if (neededUs == kNoTime || usual.insideBefore <= 0) return neededUs;
    for (const Frame& other : late.frames) {
        if (other.queuedUs <= neededUs || other.queuedUs > frame.codecOutUs) continue;
        // Where the order of decoding is another one, one more or less is no sign.
        const bool few =
                other.insideBefore >= 0 && other.insideBefore <= kStarvedPart * usual.insideBefore;
        const bool awaited = usual.insideBefore == 1 || few;
        if (awaited) neededUs = other.queuedUs;
    }
    return neededUs;
}

/** What the component did while frames came out of it later and later. */
struct Component {
    /** Beyond what is usual: at work, and without input. */
    int64_t workUs = 0;
    int64_t idleUs = 0;
    /** Part of the first in which it waited for buffers of the display. */
    int64_t waitUs = 0;
    /** Part of the second in which input was decrypted. */
    int64_t decryptUs = 0;
    /** Its longest work on one frame, how many it had besides, and the latest of its input. */
    int64_t longestUs = 0;
    int64_t inside = -1;
};

/** From the last frame that came out in time to this one. */
Component componentOf(const LateFrame& late, const Usual& usual) {
    Component sum;
    int64_t sinceUs = kNoTime;
    for (size_t i = late.at + 1; i > 0 && late.at + 1 - i < kReach; --i) {
        const Frame& frame = late.frames[i - 1];
        if (frame.codecOutUs == kNoTime) continue;
        const Frame* before = nullptr;
        for (size_t k = i - 1; k > 0 && before == nullptr; --k) {
            if (late.frames[k - 1].codecOutUs != kNoTime) before = &late.frames[k - 1];
        }
        const bool begins = before == nullptr || before->codecOutUs > frame.codecOutUs ||
                            frame.begins != Place::PLAYBACK;
        const int64_t needed = neededUs(late, frame, usual);
        const int64_t fromUs = begins ? std::min(needed, late.dueUs()) : before->codecOutUs;
        const int64_t startUs = std::clamp(needed, fromUs, std::max(fromUs, frame.codecOutUs));
        const int64_t workUs = frame.codecOutUs - startUs - usual.workUs;
        sum.workUs += workUs;
        sum.idleUs += startUs - fromUs - (begins ? 0 : usual.idleUs);
        sum.waitUs += std::max<int64_t>(0, frame.dequeueWaitUs - usual.dequeueWaitUs);
        sinceUs = fromUs;
        if (workUs > sum.longestUs) {
            sum.longestUs = workUs;
            sum.inside = frame.inside;
        }
        // In time, seen from where this one was to be shown.
        const int64_t dueUs = frame.ptsUs + late.scheduleUs;
        if (begins || before->codecOutUs - before->ptsUs <= dueUs - frame.ptsUs - usual.outLeadUs) {
            break;
        }
    }
    for (const Frame& frame : late.frames) {
        if (frame.queuedUs == kNoTime || frame.queuedUs < sinceUs) continue;
        if (frame.queuedUs > late.frame().codecOutUs) continue;
        sum.decryptUs += excessUs(frame, usual, Stage::DECRYPT);
    }
    return sum;
}

/** What a thread of the client is late by: by what it waited for, of the rest by `cause`. */
void attributeThread(int64_t displayWaitUs, int64_t decryptWaitUs, Cause cause, int64_t lostUs,
                     Lost* lost) {
    const int64_t display = std::min(lostUs, displayWaitUs);
    const int64_t decrypt = std::min(lostUs - display, decryptWaitUs);
    of(lost, Cause::DISPLAY_QUEUE) += display;
    of(lost, Cause::DECRYPTION) += decrypt;
    of(lost, cause) += lostUs - display - decrypt;
}

/** What came out of the component too late: by its own doing, for want of input or of buffers. */
void attributeCodec(const Component& component, int64_t lostUs, Lost* lost) {
    const int64_t work = component.workUs;
    const int64_t idle = component.idleUs;
    const int64_t input = static_cast<int64_t>(static_cast<double>(idle) / (work + idle) * lostUs);
    const int64_t decrypted = std::min(component.decryptUs, idle);
    const int64_t decrypt = decrypted < kNoiseUs ? 0 : input * decrypted / idle;
    of(lost, Cause::DECRYPTION) += decrypt;
    of(lost, Cause::INPUT_STARVED) += input - decrypt;
    const int64_t codec = lostUs - input;
    // Its wait for a buffer is part of its time; what little is left of that is rounding.
    const int64_t waited = component.waitUs * 5 >= work * 4 ? work : component.waitUs;
    const int64_t display = waited < kNoiseUs ? 0 : codec * waited / work;
    of(lost, Cause::DISPLAY_QUEUE) += display;
    of(lost, Cause::CODEC) += codec - display;
}

/** What was late when it reached the client, by how long the stages before took too long. */
void attributeUpstream(const LateFrame& late, const Usual& usual, int64_t lostUs, Lost* lost) {
    const auto beyondNoise = [](int64_t us) { return us < kNoiseUs ? 0 : us; };
    Component component = componentOf(late, usual);
    component.workUs = beyondNoise(component.workUs);
    component.idleUs = beyondNoise(component.idleUs);
    const int64_t message = beyondNoise(excessUs(late.frame(), usual, Stage::MESSAGE));
    if (late.frame().messageDecryptWaitUs >= kNoiseUs) {
        // The thread that decrypts is the client's: what the component had to wait for, it did too.
        component.idleUs += std::min(component.workUs, component.decryptUs);
        component.workUs = beyondNoise(component.workUs - component.decryptUs);
    }
    const int64_t codec = component.workUs + component.idleUs;
    if (message + codec == 0) {
        of(lost, Cause::UNKNOWN) += lostUs;
        return;
    }
    const int64_t delayed = lostUs * message / (message + codec);
    // On the way, or while the client's thread did something else.
    attributeThread(late.frame().messageQueueWaitUs, late.frame().messageDecryptWaitUs,
                    Cause::MESSAGE_DELAY, delayed, lost);
    if (lostUs > delayed) attributeCodec(component, lostUs - delayed, lost);
}

int64_t ms(int64_t us) {
    return us / 1000;
}

}  // namespace

Lost attribute(const LateFrame& late, const Usual& usual) {
    Lost lost{};
    const Frame& frame = late.frame();
    const int64_t fresh = late.lateUs - late.inheritedUs;
    const int64_t readyUs = frame.outputUs != kNoTime ? frame.outputUs : frame.codecOutUs;
    if (readyUs == kNoTime) {
        of(&lost, Cause::UNKNOWN) = fresh;
        return lost;
    }
    // From its call on a frame only waits for a refresh: that is nobody's doing but of those
    // before.
    const int64_t callUs = std::max(frame.renderCallUs, readyUs);
    const int64_t upstream = std::max<int64_t>(0, readyUs - late.dueUs());
    int64_t client = std::max<int64_t>(0, callUs - std::max(readyUs, late.dueUs()));
    if (upstream > kNoiseUs && client < kNoiseUs) client = 0;
    const int64_t sum = upstream + client;
    const int64_t readyLate = sum == 0 ? 0 : late.lateUs * upstream / sum;
    const int64_t before = std::max<int64_t>(0, readyLate - late.inheritedUs);
    if (fresh > before) {
        attributeThread(frame.queueWaitUs, frame.decryptWaitUs, Cause::APPLICATION, fresh - before,
                        &lost);
    }
    if (before > 0) attributeUpstream(late, usual, before, &lost);
    return lost;
}

std::string evidence(Cause cause, const LateFrame& late, const Usual& usual) {
    const Frame& frame = late.frame();
    const auto stage = [&](Stage s) { return frame.stageMs(s) == kNoTime ? 0 : frame.stageMs(s); };
    const auto usually = [&](Stage s) { return ms(usual.stageUs[static_cast<size_t>(s)]); };
    char text[200] = "";
    switch (cause) {
        case Cause::APPLICATION:
            snprintf(text, sizeof(text),
                     "%s %" PRId64 " ms after it was ready (usually %" PRId64 ")",
                     frame.dropped ? "dropped" : "released", stage(Stage::APP),
                     usually(Stage::APP));
            break;
        case Cause::MESSAGE_DELAY:
            snprintf(text, sizeof(text),
                     "%" PRId64 " ms from the component to the client (usually %" PRId64 ")",
                     stage(Stage::MESSAGE), usually(Stage::MESSAGE));
            break;
        case Cause::CODEC: {
            const Component component = componentOf(late, usual);
            snprintf(text, sizeof(text), "%" PRId64 " ms at work on a frame (usually %" PRId64 ")",
                     ms(component.longestUs + usual.workUs), ms(usual.workUs));
            if (component.inside >= 0) {
                snprintf(text + strlen(text), sizeof(text) - strlen(text),
                         " with %" PRId64 " %s waiting", component.inside,
                         component.inside == 1 ? "frame" : "frames");
            }
            break;
        }
        case Cause::INPUT_STARVED:
            snprintf(text, sizeof(text),
                     "the component was without input for %" PRId64 " ms (usually %" PRId64 ")",
                     ms(componentOf(late, usual).idleUs + usual.idleUs), ms(usual.idleUs));
            break;
        case Cause::DECRYPTION: {
            const int64_t client = std::max(frame.decryptWaitUs, frame.messageDecryptWaitUs);
            snprintf(text, sizeof(text),
                     "decryption took %" PRId64 " ms longer than usual (%" PRId64 ")",
                     ms(std::max(client, componentOf(late, usual).decryptUs)),
                     usually(Stage::DECRYPT));
            break;
        }
        case Cause::DISPLAY_QUEUE:
            snprintf(text, sizeof(text), "%" PRId64 " ms of waiting for the display's queue",
                     ms(std::max({frame.queueWaitUs, frame.messageQueueWaitUs,
                                  componentOf(late, usual).waitUs})));
            break;
        case Cause::DISPLAY_RATE:
            snprintf(text, sizeof(text), "%.3g pictures a second on a display of %.3g Hz",
                     1e6 / usual.stepUs, 1e6 / usual.grid.periodUs);
            break;
        default:
            snprintf(text, sizeof(text), "%s",
                     usual.hasStages ? "nothing unusual in any stage that was logged"
                                     : "the log has no stage times of its frames");
    }
    return text;
}

}  // namespace android::codecreport
