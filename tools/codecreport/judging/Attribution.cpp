// SPDX-License-Identifier: Apache-2.0
#include "judging/Attribution.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>

namespace android::codecreport {

namespace {

// Neighbours that a cause is looked for in: what a pipeline holds.
constexpr size_t kReach = 48;
// Below this a stage's times are noise.
constexpr int64_t kNoiseUs = 4000;
// A component with less than this part of what it usually has is out of input.
constexpr double kStarvedPart = 0.6;

int64_t& of(Lost* lost, Cause cause) {
    return (*lost)[static_cast<size_t>(cause)];
}

int64_t excessUs(const Frame& frame, const Usual& usual, Stage stage) {
    const int64_t ms = frame.stageMs(stage);
    if (ms == kNoTime) return 0;
    return std::max<int64_t>(0, ms * 1000 - usual.stageUs[static_cast<size_t>(stage)]);
}

/** How much later than usual for its due time a frame's input came. */
int64_t inputLateUs(const LateFrame& late, const Frame& frame, const Usual& usual) {
    const int64_t beganUs = inputUs(frame);
    if (beganUs == kNoTime) return 0;
    const int64_t dueUs = frame.ptsUs + late.scheduleUs;
    if (late.begins) return std::max<int64_t>(0, beganUs - dueUs);
    return std::max<int64_t>(0, beganUs - dueUs + usual.inputLeadUs);
}

bool isFull(const Frame& frame, const Usual& usual) {
    return usual.inside >= 2 && frame.inside >= kStarvedPart * usual.inside;
}

/** What the component was without: the latest input of the frame and those that it had to see. */
int64_t starvedUs(const LateFrame& late, const Usual& usual) {
    const Frame& frame = late.frame();
    int64_t starved = inputLateUs(late, frame, usual);
    if (late.begins || usual.inside < 2 || frame.inside < 0) return starved;
    if (isFull(frame, usual)) return 0;
    const size_t end = std::min(late.frames.size(), late.at + usual.inside + 1);
    for (size_t i = late.at + 1; i < end; ++i) {
        starved = std::max(starved, inputLateUs(late, late.frames[i], usual));
    }
    return starved;
}

/** The part of late input that decrypting took. */
int64_t decryptedUs(const LateFrame& late, const Usual& usual) {
    if (!usual.hasDecrypt) return 0;
    const size_t ahead = std::max<int64_t>(usual.inside, 0) + 2;
    const size_t end = std::min(late.frames.size(), late.at + ahead);
    const size_t begin = late.at > kReach ? late.at - kReach : 0;
    int64_t sum = 0;
    for (size_t i = end; i > begin; --i) {
        const Frame& frame = late.frames[i - 1];
        // Its decryption comes behind its announcement, which may have been in time.
        const int64_t excess = excessUs(frame, usual, Stage::DECRYPT);
        if (i <= late.at && excess == 0 && inputLateUs(late, frame, usual) < kNoiseUs) break;
        sum += excess;
    }
    return sum;
}

/** How long the client's thread decrypted other frames from one time to another. */
int64_t decryptingUs(const LateFrame& late, const Usual& usual, int64_t fromUs, int64_t toUs) {
    int64_t sum = 0;
    const size_t end = std::min(late.frames.size(), late.at + kReach);
    for (size_t i = late.at > kReach ? late.at - kReach : 0; usual.hasDecrypt && i < end; ++i) {
        const Frame& frame = late.frames[i];
        if (excessUs(frame, usual, Stage::DECRYPT) < kNoiseUs) continue;
        sum += std::max<int64_t>(
                0, std::min(toUs, frame.queuedUs) - std::max(fromUs, frame.announcedUs));
    }
    return sum;
}

/** What the client is late by: it, or what its thread had to wait for. */
void attributeClient(const LateFrame& late, const Usual& usual, int64_t lostUs, Lost* lost) {
    const Frame& frame = late.frame();
    const int64_t toUs = frame.renderCallUs;
    const int64_t fromUs = std::max(frame.outputUs, toUs - late.lateUs);
    const int64_t display = std::min(lostUs, frame.queueWaitUs);
    const int64_t decrypt = std::min(lostUs - display, decryptingUs(late, usual, fromUs, toUs));
    of(lost, Cause::DISPLAY_QUEUE) += display;
    of(lost, Cause::DECRYPTION) += decrypt;
    of(lost, Cause::APPLICATION) += lostUs - display - decrypt;
}

/** What came out of the component too late: by its own doing, for want of input or of buffers. */
void attributeCodec(const LateFrame& late, const Usual& usual, int64_t lostUs, Lost* lost) {
    const Frame& frame = late.frame();
    const int64_t starved = starvedUs(late, usual);
    // A component that waits for input keeps its frames for as long.
    const int64_t alone = inputLateUs(late, frame, usual);
    const int64_t slow = std::max<int64_t>(
            0, excessUs(frame, usual, Stage::CODEC) - std::max<int64_t>(0, starved - alone));
    if (starved < kNoiseUs && slow < kNoiseUs && !isFull(frame, usual)) {
        of(lost, Cause::UNKNOWN) += lostUs;
        return;
    }
    const bool onlyCodec = starved < kNoiseUs;
    const double part = onlyCodec ? 0 : static_cast<double>(starved) / (starved + slow);
    const int64_t input =
            slow < kNoiseUs && !onlyCodec ? lostUs : static_cast<int64_t>(part * lostUs);
    const int64_t decrypted = decryptedUs(late, usual);
    const int64_t decrypt =
            decrypted < kNoiseUs
                    ? 0
                    : std::min(input, input * decrypted / std::max<int64_t>(1, starved));
    of(lost, Cause::DECRYPTION) += decrypt;
    of(lost, Cause::INPUT_STARVED) += input - decrypt;
    const int64_t codec = lostUs - input;
    const int64_t waited = std::max<int64_t>(0, frame.dequeueWaitUs - usual.dequeueWaitUs);
    // Its wait for a buffer is part of its time; what little is left of that is rounding.
    const int64_t display = waited >= kNoiseUs && waited * 5 >= slow * 4 ? codec
                            : slow > 0 ? std::min(codec, codec * waited / slow)
                                       : 0;
    of(lost, Cause::DISPLAY_QUEUE) += display;
    of(lost, Cause::CODEC) += codec - display;
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
    const int64_t readyLate = std::clamp<int64_t>(readyUs - late.dueUs(), 0, late.lateUs);
    const int64_t before = std::max<int64_t>(0, readyLate - late.inheritedUs);
    if (fresh > before) attributeClient(late, usual, fresh - before, &lost);
    if (before == 0) return lost;
    const int64_t message = excessUs(frame, usual, Stage::MESSAGE);
    const int64_t delayed = message < kNoiseUs ? 0 : std::min(before, message);
    of(&lost, Cause::MESSAGE_DELAY) += delayed;
    if (before > delayed) attributeCodec(late, usual, before - delayed, &lost);
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
        case Cause::CODEC:
            snprintf(text, sizeof(text), "%" PRId64 " ms in the component (usually %" PRId64 ")",
                     stage(Stage::CODEC), usually(Stage::CODEC));
            if (frame.inside >= 0) {
                snprintf(text + strlen(text), sizeof(text) - strlen(text),
                         " with %" PRId64 " %s waiting", frame.inside,
                         frame.inside == 1 ? "frame" : "frames");
            }
            break;
        case Cause::INPUT_STARVED:
            snprintf(text, sizeof(text), "input came %" PRId64 " ms later than usual",
                     ms(starvedUs(late, usual)));
            if (frame.inside >= 0 && usual.inside >= 2) {
                snprintf(text + strlen(text), sizeof(text) - strlen(text),
                         ", %" PRId64 " frames were left in the component (usually %" PRId64 ")",
                         frame.inside, usual.inside);
            }
            break;
        case Cause::DECRYPTION: {
            const int64_t client = decryptingUs(late, usual, late.dueUs(), frame.renderCallUs);
            snprintf(text, sizeof(text),
                     "decryption took %" PRId64 " ms longer than usual (%" PRId64 ")",
                     ms(std::max(client, decryptedUs(late, usual))), usually(Stage::DECRYPT));
            break;
        }
        case Cause::DISPLAY_QUEUE:
            snprintf(text, sizeof(text), "%" PRId64 " ms of waiting for the display's queue",
                     ms(std::max(frame.queueWaitUs, frame.dequeueWaitUs - usual.dequeueWaitUs)));
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
