// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
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

/**
 * Every line that any library logs goes there as it is logged, also the fatal one, after which the
 * process aborts; called on the logging thread, one line at a time. Without a listener lines go to
 * standard error.
 */
void setLogListener(std::function<void(const LogLine&)> listener);

/** Keeps the lines while it exists, at most one at a time. Thread-safe. */
class LogCapture {
  public:
    LogCapture() {
        setLogListener([this](const LogLine& line) {
            std::lock_guard<std::mutex> guard(mLock);
            mLines.push_back(line);
        });
    }
    ~LogCapture() { setLogListener(nullptr); }

    /** The lines since the last call, oldest first. */
    std::vector<LogLine> take() {
        std::lock_guard<std::mutex> guard(mLock);
        return std::exchange(mLines, {});
    }

  private:
    std::mutex mLock;
    std::vector<LogLine> mLines;
};

}  // namespace android::test
