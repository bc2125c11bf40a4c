// SPDX-License-Identifier: Apache-2.0
#include "reading/Fit.h"

#include <stdlib.h>

#include <cmath>
#include <tuple>
#include <unordered_map>

#include "model/CodecNames.h"

namespace android::codecreport {

namespace {

constexpr int kFits = 1000;
// Timestamps that are farther apart say nothing: there may have been a seek.
constexpr int64_t kNearUs = 10'000'000;

int unlessSet(int64_t timeUs, bool isNext) {
    if (timeUs != kNoTime) return kContradicts;
    return isNext ? kFits : 0;
}

int ifEqual(int64_t a, int64_t b) {
    return a == b ? kFits : kContradicts;
}

/** The nearer the better. */
int nearness(int64_t ptsUs, int64_t lastPtsUs) {
    if (lastPtsUs == kNoTime) return 0;
    const int64_t awayUs = std::abs(ptsUs - lastPtsUs);
    return awayUs >= kNearUs ? 0 : kFits - static_cast<int>(awayUs * kFits / kNearUs);
}

/** First output and first render say how long after the first input they were. */
int fitSinceInput(const LineHint& hint, const Startup& startup, int64_t timeUs) {
    if (timeUs != kNoTime) return kContradicts;
    if (startup.firstInputUs == kNoTime) return 0;
    const int64_t inputMs = hint.fields.number("at_ms") - hint.fields.number("since_input_ms");
    return ifEqual(inputMs * 1000 + hint.monotonicOffsetUs, startup.firstInputUs);
}

int fitReport(const LineHint& hint, const Session& session) {
    const Startup& startup = session.startup;
    if (session.report.count(hint.reportKey) != 0) return kContradicts;
    // Only the phases: among the other values are rates, which may be no number at all.
    for (const auto& [key, beginUs, endUs] :
         {std::tuple("p2_ms", startup.p2BeginUs, startup.p2EndUs),
          std::tuple("p3_ms", startup.p3BeginUs, startup.p3EndUs)}) {
        if (hint.reportKey != key || beginUs == kNoTime || endUs == kNoTime) continue;
        const double valueMs = hint.fields.real("value");
        if (!(std::abs(valueMs) < 1e12)) return kContradicts;
        return ifEqual(static_cast<int64_t>(valueMs) * 1000, endUs - beginUs);
    }
    return startup.stopEndUs != kNoTime ? kFits : 0;
}

bool contradictsPrefix(const LineHint& hint, const Session& session) {
    LinePrefix prefix;
    if (session.clientPid < 0 || !parseLinePrefix(hint.fields.text("prefix"), &prefix)) {
        return false;
    }
    // A stream may become secure, and does not become clear again.
    return prefix.pid != session.clientPid || (session.secure && !prefix.secure);
}

}  // namespace

Hint hintOf(const std::string& id) {
    static const std::unordered_map<std::string, Hint> kinds = {
            {"p2_end", Hint::P2_END},
            {"p3_begin", Hint::P3_BEGIN},
            {"p3_end", Hint::P3_END},
            {"first_input", Hint::FIRST_INPUT},
            {"first_ready", Hint::FIRST_READY},
            {"first_render", Hint::FIRST_RENDER},
            {"stop_time", Hint::STOP},
            {"format", Hint::FORMAT},
            {"resolution_change", Hint::RESOLUTION},
            {"seek", Hint::SEEK},
            {"repeat_output", Hint::REPEAT},
            {"repeat_input", Hint::REPEAT},
            {"frame_queued", Hint::INPUT},
            {"frame_decrypted", Hint::INPUT},
    };
    const auto kind = kinds.find(id);
    return kind == kinds.end() ? Hint::NONE : kind->second;
}

int fitOf(const LineHint& hint, const OpenSession& open) {
    const Session& session = *open.session;
    const Startup& startup = session.startup;
    const auto number = [&hint](const char* name) { return hint.fields.number(name); };
    if (contradictsPrefix(hint, session)) return kContradicts;
    switch (hint.kind) {
        case Hint::P2_END:
            return unlessSet(startup.p2EndUs, startup.p2BeginUs != kNoTime);
        case Hint::P3_BEGIN:
            return unlessSet(startup.p3BeginUs, startup.p2EndUs != kNoTime);
        case Hint::P3_END:
            return unlessSet(startup.p3EndUs, startup.p3BeginUs != kNoTime);
        case Hint::FIRST_INPUT:
            return unlessSet(startup.firstInputUs, true);
        case Hint::FIRST_READY:
            return fitSinceInput(hint, startup, startup.firstReadyUs);
        case Hint::FIRST_RENDER:
            return fitSinceInput(hint, startup, startup.firstRenderUs);
        case Hint::STOP: {
            // While it stops it says nothing.
            const int64_t beginUs = number("stop_begin_ms") * 1000 + hint.monotonicOffsetUs;
            return unlessSet(startup.stopEndUs, session.endUs <= beginUs);
        }
        case Hint::FORMAT:
            return session.width < 0 ? kFits : 0;
        case Hint::RESOLUTION:
            if (session.width < 0) return 0;
            return ifEqual(number("width") << 32 | number("height"),
                           session.width << 32 | session.height);
        case Hint::SEEK:
            return nearness(number("last_pts_us"), open.lastOutputPtsUs);
        case Hint::REPEAT:
            return nearness(number("pts_us"), open.lastOutputPtsUs);
        case Hint::INPUT: {
            const auto inFlight = static_cast<int64_t>(open.flow->inFlight());
            return nearness(number("pts_us"), open.lastInputPtsUs) +
                   (number("records") == inFlight + 1 ? 1 : 0);
        }
        case Hint::REPORT:
            return fitReport(hint, session);
        default:
            return 0;
    }
}

}  // namespace android::codecreport
