// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

#include <string>
#include <vector>

#include "database/Database.h"
#include "fleet/LogFiles.h"
#include "reference/Reference.h"

namespace android::codecreport {

struct IngestResult {
    size_t added = 0;
    /** The database held them already; labels that were given are set anew. */
    size_t known = 0;
    size_t sessions = 0;
    /** Inputs that could not be read, or in part only, in words. */
    std::vector<std::string> problems;
    /** Of these, inputs of which nothing was taken. */
    size_t unread = 0;
    /** Why the database could not be written; then the rest was left. */
    std::string writeError;
};

/**
 * Reads and judges logs on all cores, each log by itself, and adds them to the database. Memory:
 * the logs that are being read, one a core.
 *
 * @param withFrames also writes single frames
 * @param progress writes a line of progress to standard error
 */
IngestResult ingest(const Reference& reference, const std::vector<LogFile>& files, bool withFrames,
                    bool progress, Database* database);

}  // namespace android::codecreport
