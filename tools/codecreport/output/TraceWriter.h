// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Analysis.h"

namespace android::codecreport {

/**
 * Writes sessions as a native Perfetto trace: under the process of each codec a track for the
 * session with its phases and moments, and below that, in this order,
 *   - its incidents,
 *   - when each frame was due on the display, and when it was there, with its jank and cause,
 *   - a group of tracks for each stage, tied together for each frame by a flow,
 *   - counters.
 * What overlaps stands on tracks of one name side by side.
 *
 * Times are the device's CLOCK_MONOTONIC, so that the trace lies over one of the device's own;
 * where the log shows no such time, the log's clock. Sessions of several boots keep their distance
 * by the log's clock.
 *
 * Memory: the tracks of one session at a time.
 *
 * @param path "-" is standard output
 * @return why it could not be written, empty if it was
 */
std::string writeTrace(const Analysis& analysis, const std::string& path);

}  // namespace android::codecreport
