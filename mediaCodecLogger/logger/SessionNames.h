// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <media/stagefright/foundation/AString.h>

#include <mediaCodecLogger/logger/CodecIdentity.h>
#include <mediaCodecLogger/logger/Session.h>

// The texts that log lines, report keys and records start with.

namespace android::logger {

/** Appends the prefix of warning lines, as `MediaCodecLogger::getEmbeddedWarnings()`. */
void appendWarningsPrefix(const CodecIdentity& codec, const Session& session, bool secureMemoryUsed,
                          bool atmos, AString& out);

/** The head of report keys and of the summary, for example com.example.tv.4K.HW.c2.video.avc */
AString metricPrefix(const CodecIdentity& codec, const Session& session);

/** The dimension of most records, for example HW_avc_4K_secure. */
AString codecDescriptor(const CodecIdentity& codec, const Session& session,
                        const char* afterFormat);

/** As `MediaCodecLogger::getFramedropMeta()`. */
AString framedropMeta(const CodecIdentity& codec, const Session& session);

}  // namespace android::logger
