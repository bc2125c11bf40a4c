// SPDX-License-Identifier: Apache-2.0
#include "StoryRecorder.h"

#include <inttypes.h>
#include <stdarg.h>
#include <stdio.h>

#include <map>
#include <mutex>
#include <string>

#include "MediaClock.h"

namespace android::codecplay {

namespace {

/** What a story's clock shows at its beginning. */
constexpr int64_t kStoryStartUs = 1'000'000;

/** Held from the clock read to the write, so that the events stand in the order of their times. */
std::mutex gLock;
OutputFile* gFile = nullptr;
int64_t gLastUs = 0;
const CodecBase* gLastCodec = nullptr;
std::map<const CodecBase*, size_t>& codecNumbers() {
    static auto& numbers = *new std::map<const CodecBase*, size_t>;
    return numbers;
}

void write(const CodecBase* codec, const std::string& event) {
    std::lock_guard<std::mutex> lock(gLock);
    const int64_t nowUs = monotonicNs() / 1000;
    std::string line;
    if (nowUs > gLastUs) line = "after " + std::to_string(nowUs - gLastUs) + "us ; ";
    gLastUs = nowUs;
    if (codec != gLastCodec) {
        const size_t next = codecNumbers().size() + 1;
        const std::string name =
                "c" + std::to_string(codecNumbers().try_emplace(codec, next).first->second);
        line += "codec " + name + " ; logger " + name + " ; ";
        gLastCodec = codec;
    }
    gFile->write(line + event + "\n");
}

}  // namespace

void startStory(OutputFile* file, const Options& options) {
    std::string head = "story played: a session of codecplay; name the faults that it catches\n";
    for (const auto& [name, value] : options.properties) {
        head += "property " + name;
        head += " \"" + value + "\"\n";
    }
    if (options.displayWidth > 0) {
        head += "display " + std::to_string(options.displayWidth) + " " +
                std::to_string(options.displayHeight) + "\n";
    }
    file->write(head);
    gLastUs = kStoryStartUs;
    gFile = file;
}

void recordEvent(const CodecBase* codec, const char* format, ...) {
    if (gFile == nullptr) return;
    char event[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(event, sizeof(event), format, arguments);
    va_end(arguments);
    write(codec, event);
}

void recordFormat(const CodecBase* codec, const sp<AMessage>& format) {
    if (gFile == nullptr) return;
    std::string event = "updateFormatChanged";
    for (size_t i = 0; i < format->countEntries(); ++i) {
        AMessage::Type type;
        const char* name = format->getEntryNameAt(i, &type);
        int32_t left = 0, top = 0, right = 0, bottom = 0;
        char entry[160] = "";
        if (format->findInt32(name, &left)) {
            snprintf(entry, sizeof(entry), " %s=%" PRId32, name, left);
        } else if (format->findRect(name, &left, &top, &right, &bottom)) {
            snprintf(entry, sizeof(entry), " %s=%" PRId32 ",%" PRId32 ",%" PRId32 ",%" PRId32, name,
                     left, top, right, bottom);
        }
        event += entry;
    }
    write(codec, event);
}

}  // namespace android::codecplay
