// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace android::hostplatform {

/** One record of the metrics service. Texts that were null are empty. */
struct MetricsRecord {
    std::string log;
    std::string source;
    std::string schema;
    std::string group;
    std::string name;
    std::string packageName;
    std::string unit;
    std::string dimension;
    double value = 0;
    /** The data set's entries in the order in which their keys were first set. */
    std::vector<std::pair<std::string, std::string>> data;
    int reserved = 0;
    int flag = 0;
};

/** Called on the reporting thread, one call at a time; it must not call the sink itself. */
using MetricsListener = std::function<void(const MetricsRecord&)>;

/** Replaces the listener; an empty one removes it. The old one is not called after the return. */
void setMetricsListener(MetricsListener listener);

/**
 * The record as one line of JSON without its line end, always valid UTF-8. "reserved" is left out
 * while it is 0.
 */
std::string toJson(const MetricsRecord& record);

/**
 * From now on each record is appended to this file ("-" is standard output) as one line of JSON by
 * one write(2), so that several processes can share the file and a killed one leaves whole lines.
 * Records that cannot be written are lost. Returns false, errno set, if the file does not open;
 * the file in use until then stays in use.
 */
bool openMetricsFile(const char* path);

/** Records are written nowhere again, as at the start. */
void closeMetricsFile();

}  // namespace android::hostplatform
