// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <mediaCodecLogger/base/Relaxed.h>
#include <mediaCodecLogger/logger/Atmos.h>
#include <mediaCodecLogger/logger/BitrateMeter.h>
#include <mediaCodecLogger/logger/DropRuns.h>
#include <mediaCodecLogger/logger/FramerateSample.h>
#include <mediaCodecLogger/logger/PlaybackSegments.h>
#include <mediaCodecLogger/logger/Rendering.h>
#include <mediaCodecLogger/logger/RepeatedTimestamps.h>
#include <mediaCodecLogger/logger/ResolutionChange.h>
#include <mediaCodecLogger/logger/Settling.h>
#include <mediaCodecLogger/logger/StartupProfile.h>
#include <mediaCodecLogger/logger/StreamFormat.h>

namespace android::logger {

/**
 * What is measured between two resets, each part with its rules in its own header. Assigning a
 * fresh one is the reset; what a reset keeps is not in here.
 *
 * The parts know nothing of each other, of the log and of the service. They are scalars that a
 * query may read while an event writes them.
 */
struct Session {
    PlaybackSegments segments;
    Settling settling;
    RepeatedTimestamps repeats;
    StreamFormat format;
    ResolutionChange resolutionChange;
    StartupProfile startup;
    BitrateMeter bitrate;
    FramerateSample framerate;
    DropRuns drops;
    Rendering rendering;
    Atmos atmos;
    /** Input buffers are secure. */
    Relaxed<bool> mIsSecure = false;
    /** By the component's last statistics. */
    Relaxed<uint32_t> mNonFatalErrorCount = 0;
    /** Errors of every type, also those that the codec survived. */
    Relaxed<uint32_t> mFatalErrorCount = 0;
};

}  // namespace android::logger
