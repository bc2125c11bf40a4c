// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "model/FrameFlow.h"
#include "model/Session.h"
#include "reading/Pattern.h"

namespace android::codecreport {

/** An open session and what its lines said last. */
struct OpenSession {
    std::unique_ptr<Session> session;
    std::unique_ptr<FrameFlow> flow;
    int lastTid = -1;
    /** Grows with each of its lines, over all sessions. */
    uint64_t touched = 0;
    int64_t lastInputPtsUs = kNoTime;
    int64_t lastOutputPtsUs = kNoTime;
};

/** Kinds of lines that say more of their session than its names. */
enum class Hint {
    NONE,
    P2_END,
    P3_BEGIN,
    P3_END,
    FIRST_INPUT,
    FIRST_READY,
    FIRST_RENDER,
    STOP,
    FORMAT,
    RESOLUTION,
    SEEK,
    REPEAT,
    /** A frame enters the codec. */
    INPUT,
    REPORT,
};
/** By the id of the line's reference. */
Hint hintOf(const std::string& id);

struct LineHint {
    Hint kind;
    const Fields& fields;
    /** Of a line of the report, its key in the JSON. */
    const std::string& reportKey;
    /** When the device's monotonic clock showed 0 on the log's timeline. */
    int64_t monotonicOffsetUs;
};

constexpr int kContradicts = -1;

/**
 * How well a line fits a session of several that it may be of, by what both say: phases come once
 * and in their order, differences of times agree, timestamps and frames in flight go on.
 *
 * @return kContradicts: it cannot be of this one; 0: it does not tell; else the more the better
 */
int fitOf(const LineHint& hint, const OpenSession& open);

}  // namespace android::codecreport
