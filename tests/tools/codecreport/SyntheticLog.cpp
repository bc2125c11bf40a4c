// SPDX-License-Identifier: Apache-2.0
#include "SyntheticLog.h"

#include <time.h>

#include <algorithm>

#include <android-base/stringprintf.h>

namespace android::test {

namespace {

using base::StringPrintf;

constexpr char kLogger[] = "MediaCodecLogger";
constexpr char kAnalytics[] = "ZMediaAnalyticV";
constexpr int64_t kAnnouncedMs = 100;
constexpr int64_t kDecryptMs = 2;
constexpr int64_t kCodecMs = 20;
constexpr int64_t kMessageMs = 1;
constexpr int64_t kLeadMs = 10;

/** The times of one frame, monotonic milliseconds. */
struct Times {
    int64_t ptsUs, announced, queued, decoded, output, call, render;
};

class Writer {
  public:
    explicit Writer(const Playback& playback) : mPlayback(playback) {}

    std::vector<LogMessage> write() {
        begin();
        int64_t shiftMs = 0;
        for (int i = 0; i < mPlayback.frames; ++i) frame(i, &shiftMs);
        report();
        return mMessages;
    }

  private:
    static int64_t delay(const std::map<int, int64_t>& delays, int frame) {
        const auto it = delays.find(frame);
        return it == delays.end() ? 0 : it->second;
    }

    void add(int64_t timeMs, const char* tag, std::string message) {
        mMessages.push_back({timeMs, mPlayback.pid, mPlayback.tid, tag, std::move(message)});
    }

    void begin() {
        const char* tag = mPlayback.tag.c_str();
        const int64_t at = mPlayback.startMs;
        const int64_t firstInput = at + 60 + kDecryptMs;
        for (const auto& [phase, ms] : {std::pair("P2 +", at), std::pair("P2 -", at + 20),
                                        std::pair("P3 +", at + 25), std::pair("P3 -", at + 55)}) {
            add(ms, kLogger, StringPrintf("[BRISK] %s %s %ld", tag, phase, ms));
        }
        add(firstInput, kLogger,
            StringPrintf("[BRISK] %s Got First Input Frame %ld pts:%ld", tag, firstInput,
                         mPlayback.firstPtsUs));
        add(firstInput + 5, kLogger,
            "updateFormatChanged width = 1920 height = 1080, hdrType = 1, scanType = 0, bitDepth = "
            "10, colorStandard = 6");
    }

    void frame(int i, int64_t* shiftMs) {
        Times t = {};
        t.ptsUs = mPlayback.firstPtsUs + i * kFrameMs * 1000;
        const int64_t stall = delay(mPlayback.stalls, i);
        const int64_t due = mPlayback.startMs + 60 + kAnnouncedMs + i * kFrameMs + *shiftMs;
        t.announced = std::max(due - kAnnouncedMs, mLast.queued);
        t.queued = t.announced + kDecryptMs + delay(mPlayback.slowDecrypts, i);
        t.decoded = t.queued + kCodecMs + delay(mPlayback.slowDecodes, i);
        t.output = t.decoded + kMessageMs;
        // The application releases frames in order.
        t.call = std::max({due - kLeadMs + stall, t.output + stall, mLast.call});
        t.render = std::max(due + stall, t.call);
        *shiftMs += stall;
        input(i, t);
        output(i, t);
        if (mPlayback.drops.count(i) != 0) {
            analysis(t, "Drop", t.call);
        } else {
            rendered(i, t);
        }
    }

    void input(int i, const Times& t) {
        const char* f = mPlayback.format.c_str();
        add(t.queued, kAnalytics, StringPrintf("%s queue:%ld s:5000 tsS:3", f, t.ptsUs));
        add(t.queued, kAnalytics,
            StringPrintf("%s Frame:%d Decrypt cost:%ld ts:%ld size:5000", f, i + 1,
                         t.queued - t.announced, t.ptsUs));
    }

    void output(int i, const Times& t) {
        const char* f = mPlayback.format.c_str();
        add(t.decoded, kAnalytics,
            StringPrintf("%s C2 OWD FL:%ld mediaTs:%ld f:0 0/3", f, t.decoded - t.queued, t.ptsUs));
        if (i == 0) {
            add(t.output, kLogger,
                StringPrintf("[BRISK] %s Got First Frame Ready %ld(%ld)", mPlayback.tag.c_str(),
                             t.output, t.output - t.queued));
        }
        add(t.output, kAnalytics,
            StringPrintf("%s Frame:%d Decoded and filled into output buffer, Output onWorkDone "
                         "mediaTs:%ld, 0/3",
                         f, i + 1, t.ptsUs));
        analysis(t, f, t.output);
    }

    void analysis(const Times& t, const char* label, int64_t now) {
        const bool first = mLast.render == 0;
        add(now, kAnalytics,
            StringPrintf(
                    "%s%s:%ld(%ld) TD:%ld FARD:%ld(%ld) FAD:%ld(%ld) AL:%ld(%ld) FL:%ld(%ld) 0/3",
                    first ? "Pre-Render " : "", label, t.ptsUs, now - t.ptsUs / 1000,
                    (t.ptsUs - mLast.ptsUs) / 1000, t.output - mLast.render, t.output - mLast.call,
                    t.decoded - mLast.decoded, t.output - t.decoded, now - t.output, now,
                    t.decoded - t.queued, t.output - t.queued));
    }

    void rendered(int i, const Times& t) {
        add(t.call, kAnalytics,
            StringPrintf("%s Render R-S:%ld R:%ld(%ld) pts:%ld 0/3", mPlayback.format.c_str(),
                         t.render - t.call, t.render, t.render - mLast.render, t.ptsUs));
        if (i == 0) {
            add(t.call, kLogger,
                StringPrintf("[BRISK] %s Got First Frame Render %ld(%ld), renderNum = 1",
                             mPlayback.tag.c_str(), t.call, t.call - t.queued));
        }
        mLast = t;
    }

    void report() {
        const std::string key = std::to_string(mPlayback.pid) + "." + mPlayback.tag + ".";
        const int64_t at = mLast.call + 50;
        const int64_t played = (mLast.ptsUs - mPlayback.firstPtsUs) / 1000;
        add(at, kLogger,
            StringPrintf("MC Stop Time(start: %ld, stop:%ld :40 <profileMCStopEnd 1462>", at - 40,
                         at));
        add(at, kLogger, key + StringPrintf("TotalVideoPlaybackTimeMs = %ld", played));
        add(at, kLogger, key + StringPrintf("videoResolution.FHD = %ld", played));
        add(at, kLogger, key + "StreamAvgFramerate = 24.917");
        if (!mPlayback.drops.empty()) {
            add(at, kLogger,
                key + StringPrintf("TotalFramesDropped = %zu", mPlayback.drops.size()));
        }
        add(at, kLogger, key + "BRISK-P2Ms = 20");
    }

    const Playback mPlayback;
    std::vector<LogMessage> mMessages;
    Times mLast = {};
};

std::string date(int64_t wallMs, const char* format) {
    const time_t seconds = wallMs / 1000;
    tm parts = {};
    gmtime_r(&seconds, &parts);
    char buffer[40];
    strftime(buffer, sizeof(buffer), format, &parts);
    return buffer;
}

std::string lineOf(const LogMessage& m, LogFormat format, int64_t wallMs) {
    const std::string ms =
            date(wallMs, "%m-%d %H:%M:%S") + StringPrintf(".%03d", int(wallMs % 1000));
    const char* tag = m.tag.c_str();
    const char* message = m.text.c_str();
    switch (format) {
        case LogFormat::THREADTIME:
            return StringPrintf("%s %5d %5d I %-8s: %s", ms.c_str(), m.pid, m.tid, tag, message);
        case LogFormat::TIME:
            return StringPrintf("%s I/%-8s(%5d): %s", ms.c_str(), tag, m.pid, message);
        case LogFormat::BRIEF:
            return StringPrintf("I/%-8s(%5d): %s", tag, m.pid, message);
        case LogFormat::LIBLOG:
            return StringPrintf("%s I %s %5d %5d %s", tag, date(wallMs, "%m-%d %H:%M:%S").c_str(),
                                m.pid, m.tid, message);
        default:
            return m.text;
    }
}

}  // namespace

std::string writeLog(std::vector<LogMessage> messages, LogFormat format,
                     const std::map<int64_t, int64_t>& jumps) {
    std::stable_sort(messages.begin(), messages.end(),
                     [](const auto& a, const auto& b) { return a.timeMs < b.timeMs; });
    std::string log = "--------- beginning of main\n";
    for (const LogMessage& message : messages) {
        const auto jump = jumps.upper_bound(message.timeMs);
        const int64_t ahead = jump == jumps.begin() ? 0 : std::prev(jump)->second;
        log += lineOf(message, format, message.timeMs + kWallOffsetMs + ahead) + "\n";
    }
    return log;
}

std::vector<LogMessage> messagesOf(const Playback& playback) {
    return Writer(playback).write();
}

std::string logOf(const std::vector<Playback>& playbacks, LogFormat format) {
    std::vector<LogMessage> messages;
    for (const Playback& playback : playbacks) {
        for (LogMessage& message : messagesOf(playback)) messages.push_back(std::move(message));
    }
    return writeLog(std::move(messages), format);
}

}  // namespace android::test
