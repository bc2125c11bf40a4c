// SPDX-License-Identifier: Apache-2.0
#include <tests/support/LogCapture.h>

#include <android/log.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#include <mutex>
#include <sstream>
#include <utility>

namespace {

using android::test::LogLine;

/** liblog formats into so many bytes, the NUL included. */
constexpr size_t kTextSize = 1024;

struct Log {
    std::mutex lock;
    bool isCaptured = false;
    std::vector<LogLine> lines;
    std::function<void(const LogLine&)> listener;
};

// Never destroyed: destructors of other statics may still log.
Log& log() {
    static Log& instance = *new Log;
    return instance;
}

const char* textOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

}  // namespace

// The two functions take precedence over liblog's for every library of the process.

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char text[kTextSize];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);

    LogLine line{priority, textOrEmpty(tag), text};
    std::lock_guard<std::mutex> guard(log().lock);
    if (log().listener) {
        log().listener(line);
    } else if (log().isCaptured) {
        log().lines.push_back(std::move(line));
    } else {
        std::ostringstream out;
        out << line << '\n';
        fputs(out.str().c_str(), stderr);
    }
    return 1;
}

extern "C" void __android_log_assert(const char* condition, const char* tag, const char* format,
                                     ...) {
    char text[kTextSize] = "";
    if (format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(text, sizeof(text), format, arguments);
        va_end(arguments);
    }
    const LogLine line{ANDROID_LOG_FATAL, textOrEmpty(tag),
                       textOrEmpty(condition) + (": " + std::string(text))};
    if (log().listener) {
        log().listener(line);
    } else {
        std::ostringstream out;
        out << line << '\n';
        fputs(out.str().c_str(), stderr);
    }
    abort();
}

namespace android::test {

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    static constexpr char kLetters[] = "??VDIWEFS";
    const bool isKnown = line.priority >= 0 && line.priority <= ANDROID_LOG_SILENT;
    return out << (isKnown ? kLetters[line.priority] : '?') << '/' << line.tag << ": " << line.text;
}

void setLogListener(std::function<void(const LogLine&)> listener) {
    std::lock_guard<std::mutex> guard(log().lock);
    log().listener = std::move(listener);
}

LogCapture::LogCapture() {
    std::lock_guard<std::mutex> guard(log().lock);
    if (std::exchange(log().isCaptured, true)) {
        fputs("there is a LogCapture already\n", stderr);
        abort();
    }
}

LogCapture::~LogCapture() {
    std::lock_guard<std::mutex> guard(log().lock);
    log().isCaptured = false;
    log().lines.clear();
}

std::vector<LogLine> LogCapture::lines() const {
    std::lock_guard<std::mutex> guard(log().lock);
    return log().lines;
}

std::vector<LogLine> LogCapture::take() {
    std::lock_guard<std::mutex> guard(log().lock);
    return std::exchange(log().lines, {});
}

}  // namespace android::test
