// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include <tools/codecreport/reading/LogLine.h>

namespace android::test {

using codecreport::LogFormat;

/** One message to be written, on the monotonic clock. */
struct LogMessage {
    int64_t timeMs;
    int pid;
    int tid;
    std::string tag;
    std::string text;
};

/** The log's clock shows this when the monotonic clock shows 0: 2026-03-01 00:00:00. */
constexpr int64_t kWallOffsetMs = 1772323200'000;

/**
 * A log of these messages in one of logcat's forms, in the order of their times.
 *
 * @param jumps the log's clock is ahead by so many milliseconds from a monotonic time on
 */
std::string writeLog(std::vector<LogMessage> messages, LogFormat format = LogFormat::THREADTIME,
                     const std::map<int64_t, int64_t>& jumps = {});

/** Whole, so that every time in the log is. */
constexpr int64_t kFrameMs = 40;

/** What a made-up playback of video does; times in milliseconds, frames counted from 0. */
struct Playback {
    int pid = 4321;
    int tid = 4330;
    std::string tag = "HW.c2.video.avc";
    std::string format = "avc";
    int64_t startMs = 100'000;
    int frames = 300;
    int64_t firstPtsUs = 0;
    std::set<int> drops;
    /** The application holds the frame, and all behind it, by so much longer. */
    std::map<int, int64_t> stalls;
    /** That frame only takes so much longer in the component. */
    std::map<int, int64_t> slowDecodes;
    /** Decryption of that frame, which those behind it wait for, takes so much longer. */
    std::map<int, int64_t> slowDecrypts;
};

/**
 * Everything that the library logs of it with mediaanalytic.debug 0x407. Undisturbed, a frame is
 * announced 100 ms before it is shown, decrypted for 2, in the component for 20, on its way to
 * the client for 1, and released 10 ms before its time.
 */
std::vector<LogMessage> messagesOf(const Playback& playback);

/** All that these playbacks log, in one log. */
std::string logOf(const std::vector<Playback>& playbacks, LogFormat format = LogFormat::THREADTIME);

}  // namespace android::test
