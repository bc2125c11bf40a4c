// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <media/stagefright/foundation/AString.h>

#include <mediaCodecLogger/logger/CodecIdentity.h>
#include <mediaCodecLogger/logger/Session.h>

namespace android::logger {

/** As `MediaCodecLogger::getStatus()`. `atmos` counts for audio alone. */
AString statusText(const CodecIdentity& codec, const Session& session, bool secureMemoryUsed,
                   bool atmos);

}  // namespace android::logger
