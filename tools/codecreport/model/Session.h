// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "model/CodecNames.h"
#include "model/Histogram.h"
#include "model/Incident.h"
#include "model/Series.h"

/**
 * What is known of one codec session. All times are microseconds on the log's timeline unless
 * their name says otherwise.
 */
namespace android::codecreport {

/** Something that happened at a moment. */
struct Moment {
    int64_t timeUs = 0;
    std::string kind;
    std::string text;
};

/** Moments of the start-up and stop; kNoTime where the log does not tell. */
struct Startup {
    int64_t p2BeginUs = kNoTime;
    int64_t p2EndUs = kNoTime;
    int64_t p3BeginUs = kNoTime;
    int64_t p3EndUs = kNoTime;
    int64_t firstInputUs = kNoTime;
    int64_t firstReadyUs = kNoTime;
    int64_t firstRenderUs = kNoTime;
    int64_t stopBeginUs = kNoTime;
    int64_t stopEndUs = kNoTime;
};

struct SyncStats {
    Series offsetMs;
    Histogram offsets;
    uint64_t lines = 0;
    double outsideMs = 0;
    double measuredMs = 0;
    int64_t worstMs = 0;
    int64_t lastMs = 0;
};

/** Lists that stand for more than they hold once they reach their limit. */
constexpr int64_t kMaxRunLength = 100;
constexpr size_t kMaxMoments = 1000;

struct Session {
    int id = 0;
    /** Captures count from 1; each has processes of its own. */
    int capture = 0;
    int pid = -1;
    /** Process that the codec works for, where a line tells it. */
    int clientPid = -1;
    std::string tagText;
    CodecTag tag;
    /** The name of the tracker while the format is not known. */
    std::string package;
    int64_t startUs = kNoTime;
    int64_t endUs = kNoTime;
    /** The log's timeline when the device's monotonic clock showed 0; kNoTime: no line told. */
    int64_t monotonicOffsetUs = kNoTime;
    /** The log begins with this session running. */
    bool startedBefore = false;
    bool reported = false;
    /** False: of this many sessions, this one's plots were let go. */
    bool detailed = true;
    bool sawFirstPts = false;
    bool flushPending = false;
    /** The output reached the end of the stream. */
    bool ended = false;
    /** How long the log goes on without a line of the session. */
    int64_t logEndUs = kNoTime;

    bool uhdScreen = false;
    bool secure = false;
    bool secureMemory = false;
    bool atmos = false;
    bool appTimestamps = false;
    int64_t width = -1;
    int64_t height = -1;
    int64_t hdrType = -1;
    int64_t scanType = -1;
    int64_t bitDepth = -1;
    int64_t colorStandard = -1;
    int64_t maxWidth = -1;
    int64_t maxHeight = -1;
    int64_t outputBuffers = -1;
    int64_t inputBuffers = -1;

    Startup startup;
    /** Values of the library's own report, by the JSON key of their reference. */
    std::map<std::string, double> report;

    uint64_t inputs = 0;
    uint64_t inputBytes = 0;
    uint64_t outputs = 0;
    /** Frames with a render line, and frames that the sync lines sum up. */
    uint64_t rendered = 0;
    uint64_t syncFrames = 0;
    uint64_t dropped = 0;
    uint64_t displayDropped = 0;
    uint64_t seeks = 0;
    uint64_t flushes = 0;
    uint64_t formatChanges = 0;
    uint64_t delayedOutputs = 0;
    uint64_t repeatedOutputs = 0;
    uint64_t repeatedInputs = 0;
    uint64_t errors = 0;
    uint64_t warnings = 0;

    std::array<Histogram, kStageCount> stages;
    Histogram frameIntervalMs;
    Histogram lateMs;
    FramePoints frames;
    RateSeries renderedRate;
    RateSeries inputRate;
    Series bitrateKbps;
    Series displayBuffers;
    SyncStats sync;

    uint64_t dropRunCount = 0;
    /** Runs by their length in frames; all of more than kMaxRunLength under kMaxRunLength + 1. */
    std::map<int64_t, uint64_t> dropRunLengths;
    int64_t longestDropRun = 0;
    std::vector<Moment> moments;
    uint64_t momentCount = 0;
    Judgement judgement;

    bool isVideo() const { return tag.kind == "video"; }
    void addMoment(const Moment& moment);
};

}  // namespace android::codecreport
