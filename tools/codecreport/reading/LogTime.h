// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <string_view>

namespace android::codecreport {

/**
 * Reads time stamps in logcat's forms: "[YYYY-]MM-DD HH:MM:SS[.fraction][ +ZZZZ]" and, for the
 * epoch and monotonic modifiers, "SECONDS.fraction". Dates without a year get the one that
 * lets the log end no later than a day after the reference time; the year goes on at New Year.
 * A time zone is skipped: the result is the clock that the log shows.
 */
class LogTime {
  public:
    /** @param referenceSeconds when the log was written at the latest, seconds since 1970 */
    explicit LogTime(int64_t referenceSeconds);

    struct Stamp {
        int64_t timeUs;
        int64_t resolutionUs;
        /** Characters read, without blanks that follow. */
        size_t length;
    };

    /** Reads a stamp at the very beginning of the text; length 0: there is none. */
    Stamp read(std::string_view text);

  private:
    Stamp readDate(std::string_view text);
    int yearFor(int month, int day);

    int64_t mReferenceSeconds;
    int mYear = 0;
    int mLastMonth = 0;
};

/** "MM-DD HH:MM:SS.mmm" of a time of the log's clock. */
std::string formatLogTime(int64_t timeUs);

}  // namespace android::codecreport
