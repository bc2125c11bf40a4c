// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "database/Schema.h"
#include "database/Sqlite.h"
#include "model/FrameStore.h"
#include "model/Session.h"

namespace android::codecreport {

std::vector<Column> frameColumns();

/**
 * Writes the frames of a session as they were judged.
 *
 * @param insert into the table of frameColumns()
 * @return false if the database did not take one
 */
bool writeFrames(const FrameStore& frames, const Session& session, int64_t sessionId,
                 Statement* insert);

}  // namespace android::codecreport
