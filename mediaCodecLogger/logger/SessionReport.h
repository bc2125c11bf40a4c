// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <media/stagefright/foundation/AString.h>
#include <utils/String8.h>

#include <mediaCodecLogger/logger/CodecIdentity.h>
#include <mediaCodecLogger/logger/Session.h>

namespace android::logger {

/** What a report is made of. It changes nothing of it: the session has been closed before. */
struct ReportedSession {
    const CodecIdentity& codec;
    const Session& session;
    const StreamFormatTexts& formatTexts;
    const String8& oldestAudioCodec;
    bool atmos;
};

/**
 * Writes the report to the system log and to the metrics service.
 *
 * @return the key values in one line
 */
AString writeReport(const ReportedSession& reported);

/** As `MediaCodecLogger::logToBuffers()`. */
void logMetric(const CodecIdentity& codec, const char* key, uint64_t value);

/** As `MediaCodecLogger::logFramerateToPulse()`. */
int sendFramerate(const char* packageName, const char* codec, float fps);

/** The class of the frame rate that a stream declares: "24", "25", "30", "50" or "60". */
const char* streamFramerateClass(float fps);

/** The class of a playback time: "0-5", "5-30", "30-120" or "120+" minutes. */
const char* durationClass(int64_t ms);

}  // namespace android::logger
