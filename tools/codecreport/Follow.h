// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include "Analysis.h"

namespace android::codecreport {

/** Makes the report of what has come so far. @return the exit code */
using MakeReport = std::function<int(const Copies& copies, bool isLast)>;

/**
 * Follows logs that are still being written: makes the report anew every `intervalMs` in which
 * something came, and a last time at an interrupt (SIGINT, SIGTERM) or when all pipes have ended.
 *
 * @return the exit code of the last report
 */
int follow(const std::vector<std::string>& files, int64_t intervalMs, const MakeReport& report);

}  // namespace android::codecreport
