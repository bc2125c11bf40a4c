// SPDX-License-Identifier: Apache-2.0
#include "LogWriter.h"

#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <string>

#include <android/log.h>

namespace android::codecplay {

namespace {

std::mutex gLock;
std::atomic<int> gFd{-1};
std::atomic<bool> gFailed{false};

char priorityLetter(int priority) {
    static constexpr char kLetters[] = "??VDIWEFS";
    return priority >= 0 && priority < 9 ? kLetters[priority] : '?';
}

void writeAll(const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(gFd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) {
            if (errno != EPIPE) gFailed = true;
            gFd = -1;
            return;
        }
        done += static_cast<size_t>(written);
    }
}

/** A message of several lines becomes several lines of the log, as logcat prints it. */
void onLogLine(const __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(gLock);
    if (gFd < 0) return;
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm local;
    localtime_r(&now.tv_sec, &local);
    char date[32];
    strftime(date, sizeof(date), "%m-%d %H:%M:%S", &local);
    char head[160];
    snprintf(head, sizeof(head), "%s.%03ld %5d %5d %c %-8.64s: ", date, now.tv_nsec / 1000000,
             getpid(), gettid(), priorityLetter(data->priority), data->tag ? data->tag : "");
    std::string text;
    const char* line = message;
    do {
        const char* end = strchrnul(line, '\n');
        text.append(head).append(line, end - line).push_back('\n');
        line = *end ? end + 1 : end;
    } while (*line);
    writeAll(text);
}

}  // namespace

void startLog(int fd) {
    gFd = fd;
    // Debian's log library writes no verbose and debug lines unless told to.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(onLogLine);
}

bool logWriteFailed() {
    return gFailed;
}

}  // namespace android::codecplay
