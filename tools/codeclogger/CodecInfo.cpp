// SPDX-License-Identifier: Apache-2.0
#include "CodecInfo.h"

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <iterator>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>

namespace android::codeclogger {

namespace {

/** The value of a line "\tKey: value" of the status text; empty when there is none. */
std::string statusValue(const std::string& status, const char* key) {
    const std::string start = std::string("\t") + key + ": ";
    const size_t position = status.find(start);
    if (position == std::string::npos) return "";
    const size_t value = position + start.size();
    return status.substr(value, status.find('\n', value) - value);
}

/** Why a process does not answer, as far as this one may know. */
Answer silenceOf(pid_t pid) {
    char path[32];
    snprintf(path, sizeof(path), "/proc/%d/stat", pid);
    FILE* const file = fopen(path, "re");
    if (file == nullptr) return Answer::SILENT;
    char text[512] = "";
    const size_t size = fread(text, 1, sizeof(text) - 1, file);
    fclose(file);
    text[size] = '\0';
    // "PID (NAME) STATE ...", where the name may hold anything.
    const char* const name = strrchr(text, ')');
    const char state = name != nullptr && name[1] == ' ' ? name[2] : '?';
    return state == 'T' || state == 't' ? Answer::STOPPED : Answer::SILENT;
}

CodecInfo askCodec(const ClientEntry& entry) {
    CodecInfo info;
    const sp<IMediaCodecLoggerClient> client = IMediaCodecLoggerClient::asInterface(entry.client);
    info.status = client->getStatus().string();
    client->getClientResolution(info.width, info.height);
    info.hdrType = client->getClientHDRType().string();
    info.scanType = client->getClientScanType().string();
    info.bitDepth = client->getClientBitDepth();
    client->getClientColorProperties(info.colorStandard);
    info.frames = client->getBufferCountSinceLastFlush();
    info.secureMemory = client->isVideoClientUsingSecureMem();
    const int64_t askedMs = nowMs();
    info.msSinceLastFrame = frameAgeMs(client->getTimeSinceLastFrameRendered(), askedMs);
    info.answer = Answer::GIVEN;
    if (info.status.empty()) {
        info.answer = entry.client->pingBinder() == OK ? Answer::ENDED : Answer::DIED;
    }
    readStatusText(&info);
    return info;
}

}  // namespace

int64_t nowMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// Before the first frame a codec answers with the clock, and less than nothing when the frame was
// rendered while it was asked.
int64_t frameAgeMs(int64_t answered, int64_t askedMs) {
    return answered >= askedMs ? -1 : std::max<int64_t>(answered, 0);
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
    if (answer != Answer::GIVEN) return kAnswerWords[static_cast<int>(answer)].inText;
    // Sound is not rendered frame by frame, nor are the pictures of encoders and tunneled codecs.
    const bool flows = frames > 0 || entry.firstFrameMs != 0;
    if (msSinceLastFrame < 0) return entry.isVideo && !flows ? "none yet" : "-";
    char text[32];
    if (msSinceLastFrame < 10000) {
        snprintf(text, sizeof(text), "%" PRId64 " ms", msSinceLastFrame);
    } else {
        snprintf(text, sizeof(text), "%" PRId64 " s", msSinceLastFrame / 1000);
    }
    return text;
}

std::vector<CodecInfo> CodecQuery::ask(const std::vector<ClientEntry>& entries, int64_t timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::vector<std::shared_ptr<Pending<CodecInfo>>> pending;
    {
        std::lock_guard<std::mutex> lock(mLock);
        // An answer that came after its time is out of date.
        for (auto owed = mOwed.begin(); owed != mOwed.end();) {
            owed = owed->second->isGiven() ? mOwed.erase(owed) : std::next(owed);
        }
        for (const ClientEntry& entry : entries) {
            auto& owed = mOwed[entry.handle];
            if (owed == nullptr) owed = askAside([entry] { return askCodec(entry); });
            pending.push_back(owed);
        }
    }
    std::vector<CodecInfo> infos;
    for (size_t i = 0; i < entries.size(); ++i) {
        std::optional<CodecInfo> info = pending[i]->wait(deadline);
        if (!info) info.emplace().answer = silenceOf(entries[i].hostPid);
        info->entry = entries[i];
        infos.push_back(std::move(*info));
    }
    return infos;
}

}  // namespace android::codeclogger
