// SPDX-License-Identifier: Apache-2.0
#include "reading/LogTime.h"

#include <stdio.h>
#include <time.h>

namespace android::codecreport {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/** Exactly `digits` digits at `at`, or -1. */
int fixedNumber(std::string_view text, size_t at, size_t digits) {
    if (text.size() < at + digits) return -1;
    int value = 0;
    for (size_t i = at; i < at + digits; ++i) {
        if (!isDigit(text[i])) return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

/** Days since 1970 of a date in the Gregorian calendar. */
int64_t daysOf(int year, int month, int day) {
    tm date = {};
    date.tm_year = year - 1900;
    date.tm_mon = month - 1;
    date.tm_mday = day;
    return timegm(&date) / 86400;
}

/** Reads ".digits" at `at`, returns its microseconds and moves `at` behind it. */
int64_t readFraction(std::string_view text, size_t* at, int64_t* resolutionUs) {
    *resolutionUs = 1'000'000;
    if (*at >= text.size() || text[*at] != '.') return 0;
    int64_t value = 0;
    int64_t unit = 1'000'000;
    size_t i = *at + 1;
    for (; i < text.size() && isDigit(text[i]); ++i) {
        if (unit > 1) {
            unit /= 10;
            value += unit * (text[i] - '0');
        }
    }
    if (i == *at + 1) return 0;
    *at = i;
    *resolutionUs = unit;
    return value;
}

}  // namespace

LogTime::LogTime(int64_t referenceSeconds) : mReferenceSeconds(referenceSeconds) {}

int LogTime::yearFor(int month, int day) {
    if (mYear == 0) {
        const time_t reference = mReferenceSeconds;
        tm date = {};
        gmtime_r(&reference, &date);
        mYear = date.tm_year + 1900;
        if (daysOf(mYear, month, day) > mReferenceSeconds / 86400 + 1) --mYear;
    } else if (mLastMonth == 12 && month == 1) {
        ++mYear;
    } else if (mLastMonth == 1 && month == 12) {
        // Lines of several threads cross at midnight.
        --mYear;
    }
    mLastMonth = month;
    return mYear;
}

LogTime::Stamp LogTime::readDate(std::string_view text) {
    size_t at = 0;
    int year = 0;
    if (text.size() > 5 && text[4] == '-') {
        year = fixedNumber(text, 0, 4);
        at = 5;
    }
    const int month = fixedNumber(text, at, 2);
    const int day = fixedNumber(text, at + 3, 2);
    const int hour = fixedNumber(text, at + 6, 2);
    const int minute = fixedNumber(text, at + 9, 2);
    const int second = fixedNumber(text, at + 12, 2);
    if (year < 0 || month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 24 ||
        minute < 0 || minute > 59 || second < 0 || second > 60 || text[at + 2] != '-' ||
        text[at + 5] != ' ' || text[at + 8] != ':' || text[at + 11] != ':') {
        return {};
    }
    at += 14;
    Stamp stamp = {};
    const int64_t fraction = readFraction(text, &at, &stamp.resolutionUs);
    if (year == 0) year = yearFor(month, day);
    stamp.timeUs =
            (daysOf(year, month, day) * 86400 + hour * 3600 + minute * 60 + second) * 1'000'000 +
            fraction;
    if (at + 6 <= text.size() && text[at] == ' ' && (text[at + 1] == '+' || text[at + 1] == '-') &&
        fixedNumber(text, at + 2, 4) >= 0) {
        at += 6;
    }
    stamp.length = at;
    return stamp;
}

LogTime::Stamp LogTime::read(std::string_view text) {
    if (text.size() >= 14 && (text[2] == '-' || text[4] == '-')) return readDate(text);
    size_t at = 0;
    int64_t seconds = 0;
    while (at < text.size() && isDigit(text[at]) && at < 12) {
        seconds = seconds * 10 + (text[at++] - '0');
    }
    // Only with a fraction: a bare number is a process id.
    if (at == 0 || at >= text.size() || text[at] != '.') return {};
    Stamp stamp = {};
    const int64_t fraction = readFraction(text, &at, &stamp.resolutionUs);
    if (stamp.resolutionUs == 1'000'000) return {};
    stamp.timeUs = seconds * 1'000'000 + fraction;
    stamp.length = at;
    return stamp;
}

std::string formatLogTime(int64_t timeUs) {
    const int64_t ms = (timeUs >= 0 ? timeUs : 0) / 1000;
    const time_t seconds = ms / 1000;
    tm date = {};
    gmtime_r(&seconds, &date);
    char text[40];
    snprintf(text, sizeof(text), "%02d-%02d %02d:%02d:%02d.%03d", date.tm_mon + 1, date.tm_mday,
             date.tm_hour, date.tm_min, date.tm_sec, static_cast<int>(ms % 1000));
    return text;
}

}  // namespace android::codecreport
