// SPDX-License-Identifier: Apache-2.0
#include "CodecInfo.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>

namespace codecloggerctl {

using android::IMediaCodecLoggerClient;
using android::sp;
using codeclogger::ClientEntry;

namespace {

/** The value of a line "\tKey: value" of the status text; empty when there is none. */
std::string statusValue(const std::string& status, const char* key) {
    const std::string start = std::string("\t") + key + ": ";
    const size_t position = status.find(start);
    if (position == std::string::npos) return "";
    const size_t value = position + start.size();
    return status.substr(value, status.find('\n', value) - value);
}

void askCodec(const ClientEntry& entry, CodecInfo* info) {
    info->entry = entry;
    const sp<IMediaCodecLoggerClient> client = IMediaCodecLoggerClient::asInterface(entry.client);
    info->status = client->getStatus().string();
    client->getClientResolution(info->width, info->height);
    info->hdrType = client->getClientHDRType().string();
    info->scanType = client->getClientScanType().string();
    info->bitDepth = client->getClientBitDepth();
    client->getClientColorProperties(info->colorStandard);
    info->frames = client->getBufferCountSinceLastFlush();
    info->secureMemory = client->isVideoClientUsingSecureMem();
    const int64_t beforeMs = nowMs();
    const int64_t ms = client->getTimeSinceLastFrameRendered();
    // Before the first frame the codec answers with the clock.
    info->msSinceLastFrame = ms >= beforeMs ? -1 : ms;
    info->answer = Answer::GIVEN;
    if (info->status.empty()) {
        info->answer = entry.client->pingBinder() == android::OK ? Answer::ENDED : Answer::DIED;
    }
    readStatusText(info);
}

}  // namespace

int64_t nowMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void readStatusText(CodecInfo* info) {
    info->bitrateKbps = strtoll(statusValue(info->status, "Input Bitrate").c_str(), nullptr, 10);
    info->framerate = strtod(statusValue(info->status, "Stream Framerate (fps)").c_str(), nullptr);
    info->framesDropped = strtoll(statusValue(info->status, "FramesDropped").c_str(), nullptr, 10);
}

std::string CodecInfo::resolution() const {
    if (width == 0 && height == 0) return "-";
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string CodecInfo::describe() const {
    std::string text = entry.packageName + " (pid " + std::to_string(entry.pid) + "), " +
                       (entry.isVideo ? "video " : "audio ") + entry.format;
    if (width != 0) text += " " + resolution();
    return text;
}

std::string CodecInfo::lastFrame() const {
    switch (answer) {
        case Answer::ENDED:
            return "ended";
        case Answer::DIED:
            return "died";
        case Answer::SILENT:
            return "no answer";
        case Answer::GIVEN:
            break;
    }
    // Sound is not rendered frame by frame.
    if (msSinceLastFrame < 0) return entry.isVideo ? "none yet" : "-";
    char text[32];
    if (msSinceLastFrame < 10000) {
        snprintf(text, sizeof(text), "%" PRId64 " ms", msSinceLastFrame);
    } else {
        snprintf(text, sizeof(text), "%" PRId64 " s", msSinceLastFrame / 1000);
    }
    return text;
}

struct CodecQuery::Slot {
    std::mutex lock;
    std::condition_variable changed;
    bool done = false;
    CodecInfo info;
};

std::vector<CodecInfo> CodecQuery::ask(const std::vector<ClientEntry>& entries, int64_t timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::vector<std::shared_ptr<Slot>> slots;
    for (const ClientEntry& entry : entries) {
        std::shared_ptr<Slot>& owed = mOwed[entry.handle];
        if (owed == nullptr) {
            owed = std::make_shared<Slot>();
            std::thread([slot = owed, entry] {
                CodecInfo info;
                askCodec(entry, &info);
                std::lock_guard<std::mutex> lock(slot->lock);
                slot->info = std::move(info);
                slot->done = true;
                slot->changed.notify_all();
            }).detach();
        }
        slots.push_back(owed);
    }
    std::vector<CodecInfo> infos;
    for (size_t i = 0; i < entries.size(); ++i) {
        std::unique_lock<std::mutex> lock(slots[i]->lock);
        slots[i]->changed.wait_until(lock, deadline, [&] { return slots[i]->done; });
        infos.push_back(slots[i]->info);
        // Of an answer that came late, the service's share may have changed since.
        infos.back().entry = entries[i];
        if (slots[i]->done) mOwed.erase(entries[i].handle);
    }
    return infos;
}

}  // namespace codecloggerctl
