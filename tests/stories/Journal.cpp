// SPDX-License-Identifier: Apache-2.0
#include "Journal.h"

#include <dlfcn.h>
#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <android/log.h>
#include <cutils/properties.h>
#include <tests/support/LogCapture.h>

namespace {

using android::test::Dumps;
using android::test::Journal;

Dumps gDumps = Dumps::WORK;

template <typename Function>
Function* next(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

ssize_t writeDump(void* path, const char* data, size_t size) {
    if (gDumps == Dumps::FAIL_TO_WRITE) {
        errno = ENOSPC;
        return 0;
    }
    Journal::instance().outcome("write " + std::string(static_cast<char*>(path)) + " " +
                                std::string(data, size));
    return static_cast<ssize_t>(size);
}

int closeDump(void* path) {
    Journal::instance().outcome("close " + std::string(static_cast<char*>(path)));
    free(path);
    return 0;
}

}  // namespace

// These come before the libraries' own for every library of the process.

extern "C" int property_set(const char* key, const char* value) {
    Journal::instance().outcome(std::string("property_set ") + key + "=" + value);
    return android::test::setProperty(key, value) ? 0 : -1;
}

extern "C" void atrace_int64_body(const char* name, int64_t value) {
    Journal::instance().outcome("trace " + std::string(name) + "=" + std::to_string(value));
}

extern "C" FILE* fopen(const char* path, const char* mode) {
    static const auto real = next(&fopen, "fopen");
    if (strncmp(path, "/data/tmp/dump", 14) != 0) return real(path, mode);
    Journal::instance().outcome("fopen " + std::string(path) + " " + mode);
    if (gDumps == Dumps::FAIL_TO_OPEN) {
        errno = EACCES;
        return nullptr;
    }
    // Unbuffered, so that each write stands where it happens.
    FILE* file = fopencookie(strdup(strrchr(path, '/') + 1), mode,
                             {nullptr, writeDump, nullptr, closeDump});
    setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

namespace android::test {

namespace {

/** On one line: what is not printable as \xNN, and a long run of one character as c{length}. */
std::string onOneLine(const std::string& text) {
    constexpr size_t kLongRun = 20;
    std::string line;
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        const size_t end = text.find_first_not_of(c, at);
        const size_t run = (end == std::string::npos ? text.size() : end) - at;
        char code[5];
        snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(c));
        // A blank at the end would not be seen, and editors remove it.
        const bool isPrintable = c >= ' ' && c <= '~' && (c != ' ' || at + 1 < text.size());
        line += c == '\n' ? "\\n" : c == '\t' ? "\\t" : isPrintable ? std::string(1, c) : code;
        if (run >= kLongRun) line += "{" + std::to_string(run) + "}";
        at += run >= kLongRun ? run : 1;
    }
    return line;
}

bool isResult(const std::string& line) {
    return line[0] == '=';
}

bool isDigitAt(const std::string& text, size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

}  // namespace

void setDumps(Dumps dumps) {
    gDumps = dumps;
}

bool setProperty(const char* key, const char* value) {
    static const auto real = next(&property_set, "property_set");
    return real(key, value) == 0;
}

Journal& Journal::instance() {
    static Journal& journal = *new Journal;
    return journal;
}

void Journal::open(int fd) {
    mFd = fd;
    mMasks.clear();
    maskPid();
    setLogListener([this](const LogLine& line) {
        const std::string tag = line.tag == "MediaCodecLogger" ? "" : "/" + line.tag;
        // Not what a hook waits for: the log is locked, and so may be what logs.
        show(shown("??VDIWEFS"[line.priority] + tag + " " + line.text));
        if (line.priority == ANDROID_LOG_FATAL) flush();
    });
    hostplatform::setMetricsListener(
            [this](const hostplatform::MetricsRecord& metrics) { record(metrics); });
}

void Journal::mask(const std::string& text, const std::string& name) {
    mMasks.insert(mMasks.begin(), {text, name});
}

void Journal::maskPid() {
    // Where a pid stands: any other number may be the same.
    mask("pid:" + std::to_string(getpid()), "pid:<pid>");
    mask("_" + std::to_string(getpid()), "_<pid>");
}

void Journal::source(const std::string& text) {
    flush();
    dprintf(mFd, "%s\n", text.c_str());
}

void Journal::outcome(const std::string& text) {
    const std::string line = shown(text);
    show(line);
    if (mHook && line.find(mHookText) != std::string::npos) std::exchange(mHook, nullptr)();
}

void Journal::show(const std::string& line) {
    const bool isLeftOut = mFilter[0] == '^' ? line.compare(0, mFilter.size() - 1, mFilter, 1) != 0
                                             : line.find(mFilter) == std::string::npos;
    if (isLeftOut) return;
    if (mTimes == 0 || line != mLast || isResult(mLast)) flush();
    mLast = line;
    ++mTimes;
}

void Journal::result(const std::string& value) {
    const std::string shownValue = value.empty() ? "\"\"" : value;
    if (mTimes > 0 && isResult(mLast)) {
        mLast += " | " + shown(shownValue);
    } else {
        outcome("= " + shownValue);
    }
}

void Journal::flush() {
    if (mTimes == 1) dprintf(mFd, "    %s\n", mLast.c_str());
    if (mTimes > 1) dprintf(mFd, "    %s (%d times)\n", mLast.c_str(), mTimes);
    mTimes = 0;
}

std::string Journal::shown(const std::string& text) const {
    std::string line = onOneLine(text);
    for (const auto& [from, to] : mMasks) {
        for (size_t at = 0; (at = line.find(from, at)) != std::string::npos;) {
            const bool isPart = (isDigitAt(line, at) && at > 0 &&
                                 (isDigitAt(line, at - 1) || line[at - 1] == '{')) ||
                                isDigitAt(line, at + from.size());
            if (!isPart) line.replace(at, from.size(), to);
            at += isPart ? from.size() : to.size();
        }
    }
    // A client that a dead service never knew.
    constexpr char kId[] = " fail id:";
    const size_t id = line.find(kId);
    if (id != std::string::npos) line.replace(id + strlen(kId), std::string::npos, "<client>");
    return line;
}

void Journal::record(const hostplatform::MetricsRecord& record) {
    // What all records have in common is not written down.
    const bool isUsual = record.log == "Vlog" && record.source == "fsl0vcpd" &&
                         record.group == "MMSW" && record.reserved == 0 &&
                         record.packageName == "com.android.mediaplayer";
    if (!isUsual) {
        outcome("metric " + hostplatform::toJson(record));
        return;
    }
    char value[32];
    snprintf(value, sizeof(value), "%.9g", record.value);
    std::string text = "metric " + record.schema + " " + record.name + " " + value + " " +
                       record.unit + " [" + record.dimension + "]";
    for (const auto& [key, entry] : record.data) text += " " + key + "=" + entry;
    outcome(text + " " + std::to_string(record.flag));
}

}  // namespace android::test
