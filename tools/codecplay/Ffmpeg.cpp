// SPDX-License-Identifier: Apache-2.0
#include "Ffmpeg.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <mutex>

#include "Messages.h"

namespace android::codecplay {

namespace {

/** A damaged stretch yields messages by the hundred, and the first ones tell the story. */
constexpr int kMessagesShown = 5;

std::mutex gLock;
std::string gFile;
bool gQuiet = false;
int gMessages = 0;

void onMessage(void* context, int level, const char* format, va_list args) {
    if (level > AV_LOG_ERROR) return;
    char text[512];
    vsnprintf(text, sizeof(text), format, args);
    size_t length = strlen(text);
    while (length > 0 && text[length - 1] == '\n') text[--length] = '\0';
    const AVClass* avClass = context ? *static_cast<AVClass**>(context) : nullptr;

    std::lock_guard<std::mutex> lock(gLock);
    if (length == 0 || ++gMessages > kMessagesShown || gQuiet) return;
    const std::string source = avClass ? avClass->item_name(context) : "ffmpeg";
    complain(gFile, "[" + source + "] " + text);
}

}  // namespace

std::string ffmpegError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE];
    av_strerror(code, text, sizeof(text));
    return text;
}

void collectFfmpegMessages(const std::string& file, bool quiet) {
    std::lock_guard<std::mutex> lock(gLock);
    gFile = file;
    gQuiet = quiet;
    gMessages = 0;
    av_log_set_callback(onMessage);
}

void reportFfmpegMessages() {
    std::lock_guard<std::mutex> lock(gLock);
    if (gMessages > kMessagesShown && !gQuiet) {
        complain(gFile, std::to_string(gMessages - kMessagesShown) + " more messages of this kind");
    }
}

}  // namespace android::codecplay
