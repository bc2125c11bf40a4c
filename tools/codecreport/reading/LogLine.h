// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string_view>

namespace android::codecreport {

/** Text forms of a log. LIBLOG is what the host's log library writes to standard error. */
enum class LogFormat {
    THREADTIME,
    TIME,
    LONG,
    BRIEF,
    TAG,
    PROCESS,
    THREAD,
    LIBLOG,
    RAW,
    COUNT,
};

const char* toString(LogFormat format);

/** One message of the log; the views are good until the next line is read. */
struct LogLine {
    LogFormat format = LogFormat::RAW;
    bool hasTime = false;
    /** Clock of the log in microseconds: since 1970 without a time zone, or since boot. */
    int64_t timeUs = 0;
    /** What the log's clock resolves: 1 000 000 for a form that shows seconds only. */
    int64_t resolutionUs = 1000;
    /** -1 where the form does not show them. */
    int pid = -1;
    int tid = -1;
    char priority = '?';
    /** Empty where the form does not show it. */
    std::string_view tag;
    std::string_view text;
};

}  // namespace android::codecreport
