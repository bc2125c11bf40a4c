// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace android::test {

/** One line of the system log; priority is an android_LogPriority. */
struct LogLine {
    int priority = 0;
    std::string tag;
    std::string text;

    bool operator==(const LogLine& other) const {
        return priority == other.priority && tag == other.tag && text == other.text;
    }
};

/** "W/Tag: text" */
std::ostream& operator<<(std::ostream& out, const LogLine& line);

/** Every line goes there as it is logged, also the fatal one; called on the logging thread. */
void setLogListener(std::function<void(const LogLine&)> listener);

/**
 * Keeps what any library logs through __android_log_print while it exists; without one, lines go to
 * standard error. At most one at a time. Thread-safe.
 *
 * __android_log_assert is no line: it prints "F/Tag: condition: message" to standard error and
 * aborts, for EXPECT_DEATH to see.
 */
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /** The lines so far, oldest first. */
    std::vector<LogLine> lines() const;
    /** The same, without keeping them. */
    std::vector<LogLine> take();
};

}  // namespace android::test
