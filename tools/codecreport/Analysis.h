// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/FrameStore.h"
#include "model/Session.h"
#include "reading/LogLine.h"
#include "reading/MetricsReader.h"
#include "reading/SessionBuilder.h"
#include "reference/Reference.h"

namespace android::codecreport {

/** Everything that was read, ready to be shown. */
struct Analysis {
    std::vector<std::string> files;
    ReadStats stats;
    std::array<uint64_t, static_cast<size_t>(LogFormat::COUNT)> formats{};
    std::vector<std::unique_ptr<Session>> sessions;
    /** Their frames; forEachFrame() reads them as they were judged. */
    FrameStore frames;
    MetricsReader metrics;
    /** Inputs that could not be opened, hold no log or end early, in words. */
    std::vector<std::string> problems;
    /** An input ended early; what was read until then stands. */
    bool endsEarly = false;
};

/** Where to read a log in its stead, by its name. */
using Copies = std::map<std::string, std::string>;

/**
 * Reads logs one after the other, "-" being standard input. Each capture has its own clock.
 *
 * @param progress writes a line of progress to standard error
 * @return false if one of the inputs could not be opened or holds no log
 */
bool readLogs(const Reference& reference, const std::vector<std::string>& files, bool progress,
              Analysis* analysis, const Copies& copies = {});
bool readMetrics(const std::string& file, Analysis* analysis);

}  // namespace android::codecreport
