// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <unordered_map>

#include "model/FrameFlow.h"
#include "model/Session.h"
#include "reading/LogClock.h"
#include "reading/Pattern.h"

namespace android::codecreport {

/** A recognised line and the session that it belongs to. */
struct Event {
    Session& session;
    FrameFlow& flow;
    const Fields& fields;
    const LogClock& clock;
    /** When the line was written, on the log's timeline. */
    int64_t timeUs;

    /** Adds a moment to the session. */
    void moment(const char* kind, std::string text) const;
    /** The timeline of a monotonic stamp in the line; 0 (never stamped) is kNoTime. */
    int64_t stamp(const char* field) const;
};

/** What a kind of line changes. */
struct LineHandler {
    void (*handle)(const Event&) = nullptr;
    /** The monotonic time at which the line was written, from its fields; null: it shows none. */
    int64_t (*nowMs)(const Fields&) = nullptr;
};

/** Handlers by the id of the line's reference; lines without one change nothing. */
using LineHandlers = std::unordered_map<std::string, LineHandler>;
void addLoggerLines(LineHandlers* handlers);
void addAnalyticsLines(LineHandlers* handlers);

/** printf into a string. */
std::string format(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace android::codecreport
