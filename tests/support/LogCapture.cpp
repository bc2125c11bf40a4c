// SPDX-License-Identifier: Apache-2.0
#include <tests/support/LogCapture.h>

#include <android/log.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#include <sstream>

namespace {

struct Log {
    std::mutex lock;
    std::function<void(const android::test::LogLine&)> listener;
};

// Never destroyed: destructors of other statics may still log.
Log& log() {
    static Log& instance = *new Log;
    return instance;
}

void print(int priority, const char* tag, const std::string& before, const char* format,
           va_list arguments) {
    char text[1024];  // as much as liblog formats, the NUL included
    vsnprintf(text, sizeof(text), format, arguments);
    const android::test::LogLine line{priority, tag, before + text};
    std::lock_guard<std::mutex> guard(log().lock);
    if (log().listener) {
        log().listener(line);
    } else {
        std::ostringstream out;
        out << line << '\n';
        fputs(out.str().c_str(), stderr);
    }
}

}  // namespace

// The two functions take precedence over liblog's for every library of the process.

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print(priority, tag, "", format, arguments);
    va_end(arguments);
    return 1;
}

extern "C" void __android_log_assert(const char* condition, const char* tag, const char* format,
                                     ...) {
    va_list arguments;
    va_start(arguments, format);
    print(ANDROID_LOG_FATAL, tag, std::string(condition != nullptr ? condition : "") + ": ",
          format != nullptr ? format : "", arguments);
    va_end(arguments);
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

}  // namespace android::test
