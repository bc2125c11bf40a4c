// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <hostplatform/MetricsSink.h>

namespace android::test {

/**
 * What comes out of a story's process, over whatever channel, in one order: log lines, metrics
 * records, calls to the service, property writes, trace counters, dumps, results and the fatal line
 * before a death. Written line by line, so that what a dying process did is known.
 *
 * It stands before the functions of the platform that libraries call to log, to set a property, to
 * trace and to open a file.
 */
class Journal {
  public:
    static Journal& instance();

    /** Writes to this descriptor from now on, and listens to all channels. */
    void open(int fd);
    /** Shows `text` as `name`, where no digit stands beside it: what differs from run to run. */
    void mask(const std::string& text, const std::string& name);
    /** The same of this process's pid; again in each process. */
    void maskPid();

    /** A line of the story itself. */
    void source(const std::string& text);
    /** Something that came out. */
    void outcome(const std::string& text);
    /** What an operation answered; answers with nothing in between share a line. */
    void result(const std::string& value);
    void record(const hostplatform::MetricsRecord& record);

    /**
     * Outcomes that do not hold this text, or behind "^" do not start with it, are left out; "\n"
     * leaves out all of them.
     */
    void setFilter(std::string text) {
        flush();
        mFilter = std::move(text);
    }
    /** What happens once, while a record or call that holds this text comes out. */
    void setHook(std::string text, std::function<void()> action) {
        mHookText = std::move(text);
        mHook = std::move(action);
    }
    /** Writes what still waits for more. */
    void flush();

  private:
    std::string shown(const std::string& text) const;
    void show(const std::string& line);

    int mFd = -1;
    std::string mFilter;
    std::string mHookText;
    std::function<void()> mHook;
    /** The last line and how often it came; it waits for more of the same. */
    std::string mLast;
    int mTimes = 0;
    std::vector<std::pair<std::string, std::string>> mMasks;
};

/** Sets a property without a line in the journal; false if it is refused. */
bool setProperty(const char* key, const char* value);

/** What becomes of dumps: they open and take all bytes, do not open, or take none. */
enum class Dumps { WORK, FAIL_TO_OPEN, FAIL_TO_WRITE };
void setDumps(Dumps dumps);

}  // namespace android::test
