// SPDX-License-Identifier: Apache-2.0
#include "LogWriter.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include <android/log.h>

#include "OutputFile.h"

namespace android::codecplay {

namespace {

/** Held from the clock read to the write, so that the lines' times rise. */
std::mutex gLock;
OutputFile* gFile = nullptr;

char priorityLetter(int priority) {
    static constexpr char kLetters[] = "??VDIWEFS";
    return priority >= 0 && priority < 9 ? kLetters[priority] : '?';
}

/** A message of several lines becomes several lines of the log, as logcat prints it. */
void onLogLine(const __android_logger_data* data, const char* message) {
    std::lock_guard<std::mutex> lock(gLock);
    if (!gFile->isOpen()) return;
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
    gFile->write(text);
}

}  // namespace

void startLog(OutputFile* file) {
    gFile = file;
    // Debian's log library writes no verbose and debug lines unless told to.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(onLogLine);
}

}  // namespace android::codecplay
