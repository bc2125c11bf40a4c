// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Session.h"

namespace android::codecreport {

enum class Counter { FRAMES_IN_FLIGHT, BITRATE_KBPS, SYNC_OFFSET_MS, DISPLAY_BUFFERS, COUNT };
constexpr size_t kCounterCount = static_cast<size_t>(Counter::COUNT);

/**
 * Hears of everything as it is read, for what need not be kept. Times may go back a little from
 * one call to the next, never within one frame.
 */
class SessionObserver {
  public:
    virtual ~SessionObserver() = default;

    virtual void onSession(const Session& session) = 0;
    virtual void onFrame(const Session& session, const Frame& frame) = 0;
    virtual void onCounter(const Session& session, Counter counter, int64_t timeUs,
                           double value) = 0;
    virtual void onMoment(const Session& session, const Moment& moment) = 0;
    virtual void onSpan(const Session& session, const char* name, int64_t beginUs,
                        int64_t endUs) = 0;
};

}  // namespace android::codecreport
