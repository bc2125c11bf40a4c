// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "model/FrameStore.h"
#include "model/Session.h"

namespace android::codecreport {

/**
 * Judges a session by all that is known of it. May be repeated while a session goes on: what was
 * judged before is forgotten.
 */
void judge(const FrameStore& store, Session* session);

/** The frames of a judged session as they were judged, in the order in which they ended. */
void forEachFrame(const FrameStore& store, const Session& session,
                  const std::function<void(const JudgedFrame&)>& onFrame);

}  // namespace android::codecreport
