// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "reading/LogLine.h"
#include "reading/LogTime.h"

namespace android::codecreport {

/**
 * Takes a captured log apart, line by line, in whichever of logcat's forms each line is: the form
 * may change within a file, and lines of other origin may stand between.
 *
 * Not thread-safe. Memory: one line and the last header.
 */
class LogcatParser {
  public:
    enum class Result {
        MESSAGE,
        /** Part of the form: an empty line, "--------- beginning of main", a header. */
        FRAME,
        NOT_A_LOG_LINE,
    };

    explicit LogcatParser(int64_t referenceSeconds) : mTime(referenceSeconds) {}

    /** @param text one line without its line end; must outlive *line */
    Result parse(std::string_view text, LogLine* line);

    /** Messages read so far, by form. */
    const std::array<uint64_t, static_cast<size_t>(LogFormat::COUNT)>& counts() const {
        return mCounts;
    }

  private:
    bool parseAs(LogFormat format, std::string_view text, LogLine* line);
    bool parseThreadtime(std::string_view text, LogLine* line);
    bool parseTime(std::string_view text, LogLine* line);
    bool parseLiblog(std::string_view text, LogLine* line);
    bool parseLongHeader(std::string_view text);
    bool readTime(std::string_view* text, LogLine* line);

    LogTime mTime;
    std::array<uint64_t, static_cast<size_t>(LogFormat::COUNT)> mCounts{};
    LogFormat mLast = LogFormat::THREADTIME;
    bool mSawHeader = false;
    std::string mStripped;
    /** The long form: a header, then the message's lines until an empty one. */
    bool mInLong = false;
    LogLine mLongHeader;
    std::string mLongTag;
};

}  // namespace android::codecreport
