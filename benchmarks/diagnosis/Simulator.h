// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include <tests/support/LogCapture.h>

namespace android::test {

enum class FaultKind {
    STARVE,
    SLOW_DECRYPT,
    SLOW_DECRYPTS,
    SLOW_DECODE,
    SLOW_DECODES,
    LATE_MESSAGE,
    STALL,
    NEEDLESS_DROPS,
    BLOCKED_QUEUE,
    KEPT_BUFFERS,
    SLOW_DISPLAY,
    COUNT
};

/** Something goes wrong with a frame, counted from 0 in the order of presentation, and lasts. */
struct Fault {
    FaultKind kind;
    int frame;
    int64_t ms;
};

/** How a made-up playback is built; all times that are no whole milliseconds may be anything. */
struct Setup {
    bool omx = false;
    const char* mask = "0x407";
    double fps = 30;
    double displayHz = 60;
    /** Of the schedule against the display, in refreshes. */
    double phase = 0;
    /** Render times are those of refreshes, as applications that know them ask for. */
    bool snaps = true;
    int frames = 240;
    bool reorders = false;
    int inputSlots = 4;
    /** Frames that the component must have besides before one comes out. */
    int depth = 0;
    int outputBuffers = 8;
    double decryptMs = 1;
    double decodeMs = 8;
    double messageMs = 0.3;
    int leadRefreshes = 2;
    bool dropsLate = true;
    /** What comes late shifts the schedule instead of being late by it. */
    bool rebases = false;
    /** One thread feeds, hears of output and releases it. */
    bool oneThread = true;
    /** The source has a frame only so long before its time; 0: as soon as it is wanted. */
    double liveAheadMs = 0;
    int seekAt = -1;
    int flushAt = -1;
    int pauseAt = -1;
    int64_t pauseMs = 0;
    /** The session is stopped so long after its last picture; or the log just ends. */
    bool stops = true;
    int64_t lastsMs = 120;
    std::vector<Fault> faults;
};

/** A time in which the viewer saw a picture for too long, or not at all. */
struct Seen {
    double fromMs;
    double toMs;
    double stoodMs;
    int lost;
};

struct Simulated {
    struct Line {
        int64_t timeMs;
        LogLine line;
    };
    std::vector<Line> log;
    /** What was wrong on the display, in order of time. */
    std::vector<Seen> seen;
    /** When each of the faults began; negative: never. */
    std::vector<double> faultMs;
    /** A picture may stand so much longer than its time because of the cadence. */
    double toleranceMs = 0;

    double badnessMs() const;
};

/**
 * Plays a made-up video in virtual time: source, decryption, component, messages, application and
 * display hold each frame for as long as they do, and report to the library as a media framework
 * does. The log is what the library itself writes.
 */
Simulated simulate(const Setup& setup);

}  // namespace android::test
