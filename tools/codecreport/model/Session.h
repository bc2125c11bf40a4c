// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <array>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "model/CodecNames.h"
#include "model/Histogram.h"
#include "model/Incident.h"

/**
 * What is known of one codec session. All times are microseconds on the log's timeline unless
 * their name says otherwise.
 */
namespace android::codecreport {

constexpr int64_t kNoTime = std::numeric_limits<int64_t>::min();

enum class Stage { DECRYPT, CODEC, MESSAGE, APP, LEAD, COUNT };
constexpr size_t kStageCount = static_cast<size_t>(Stage::COUNT);
/** "decrypt", "codec", "message", "app", "lead" */
const char* toString(Stage stage);

/** Who held a frame up. */
enum class OldCause { INPUT_LATE, DECRYPT, CODEC, MESSAGE, APP, DISPLAY, UNKNOWN };
const char* toString(OldCause cause);

/** One frame on its way through the codec; kNoTime for what no line told. */
struct Frame {
    int64_t ptsUs = 0;
    int64_t number = -1;
    int64_t sizeBytes = -1;
    int64_t announcedUs = kNoTime;
    int64_t queuedUs = kNoTime;
    int64_t codecInUs = kNoTime;
    int64_t codecOutUs = kNoTime;
    int64_t outputUs = kNoTime;
    int64_t renderCallUs = kNoTime;
    /** When the display was to show it; the render call where the client gave no clock time. */
    int64_t displayUs = kNoTime;
    bool rendered = false;
    bool dropped = false;
    /** When it should have been displayed: as long after the last one as the timestamps say. */
    int64_t dueUs = kNoTime;

    /** Milliseconds in the stage, or kNoTime. */
    int64_t stageMs(Stage stage) const;
    /** From the first to the last time that is known. */
    int64_t firstUs() const;
    int64_t lastUs() const;
};

struct Verdict {
    OldCause cause = OldCause::UNKNOWN;
    /** A sentence for people. */
    std::string text;
};

struct WorstFrame {
    Frame frame;
    /** How much later than due the frame was shown, or dropped. */
    int64_t lateMs = 0;
    Verdict verdict;
};

struct DropRun {
    int64_t startUs = 0;
    int64_t endUs = 0;
    int64_t ptsUs = 0;
    int64_t frames = 0;
    /** What held the first of its frames up: those behind it then wait in stages of their own. */
    OldCause cause = OldCause::UNKNOWN;
};

struct Freeze {
    int64_t startUs = 0;
    int64_t durationMs = 0;
    int64_t ptsUs = 0;
    Verdict verdict;
};

/** Something that happened at a moment. */
struct Moment {
    int64_t timeUs = 0;
    std::string kind;
    std::string text;
};

/**
 * A value over time in at most kMax points: when they are full, each two become one, so that the
 * line keeps its shape over the whole session. Each point keeps the smallest and largest value.
 */
class Series {
  public:
    static constexpr size_t kMax = 2000;
    struct Point {
        int64_t timeUs;
        double sum;
        double low;
        double high;
        uint32_t count;
        double mean() const { return sum / count; }
    };
    void add(int64_t timeUs, double value);
    const std::vector<Point>& points() const { return mPoints; }
    /** Values that one point stands for. */
    uint32_t stride() const { return mStride; }

  private:
    std::vector<Point> mPoints;
    uint32_t mStride = 1;
};

/**
 * Amounts per span of time, in at most kMax spans: when they are full, spans double. Spans in which
 * nothing was added count as 0.
 */
class RateSeries {
  public:
    static constexpr size_t kMax = 2000;
    void add(int64_t timeUs, double amount);
    int64_t startUs() const { return mStartUs; }
    int64_t spanUs() const { return mSpanUs; }
    int64_t lastUs() const { return mLastUs; }
    const std::vector<double>& sums() const { return mSums; }

  private:
    std::vector<double> mSums;
    int64_t mStartUs = 0;
    int64_t mLastUs = 0;
    int64_t mSpanUs = 1'000'000;
};

/** A frame as it is drawn. */
struct FramePoint {
    int64_t timeUs;
    int64_t ptsUs;
    std::array<int32_t, kStageCount> stageMs;
    int32_t lateMs;
    bool dropped;
};
constexpr int32_t kNoStage = std::numeric_limits<int32_t>::min();

/**
 * At most kMax frames to draw: when they are full, of each two neighbours the one stays that was
 * dropped, later or longer on its way, so that what went wrong stays visible.
 */
class FramePoints {
  public:
    static constexpr size_t kMax = 4000;
    void add(const FramePoint& point);
    const std::vector<FramePoint>& points() const { return mPoints; }
    /** Frames of which the worst is drawn. */
    uint32_t stride() const { return mStride; }

  private:
    std::vector<FramePoint> mPoints;
    uint32_t mStride = 1;
    uint32_t mPending = 0;
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
constexpr size_t kMaxDropRuns = 1000;
constexpr int64_t kMaxRunLength = 100;
constexpr size_t kMaxFreezes = 500;
constexpr size_t kMaxMoments = 1000;
constexpr size_t kMaxWorstFrames = 50;

struct Session {
    int id = 0;
    int pid = -1;
    /** Process that the codec works for, where a line tells it. */
    int clientPid = -1;
    std::string tagText;
    CodecTag tag;
    /** The name of the tracker while the format is not known. */
    std::string package;
    int64_t startUs = kNoTime;
    int64_t endUs = kNoTime;
    /** The log begins with this session running. */
    bool startedBefore = false;
    bool reported = false;
    /** False: of this many sessions, this one's plots were let go. */
    bool detailed = true;
    bool sawFirstPts = false;
    bool flushPending = false;

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
    SyncStats sync;

    uint64_t dropRunCount = 0;
    std::vector<DropRun> dropRuns;
    /** Runs by their length in frames; all of more than kMaxRunLength under kMaxRunLength + 1. */
    std::map<int64_t, uint64_t> dropRunLengths;
    int64_t longestDropRun = 0;
    uint64_t freezeCount = 0;
    int64_t freezeTotalMs = 0;
    std::vector<Freeze> freezes;
    std::vector<WorstFrame> worstFrames;
    std::vector<Moment> moments;
    uint64_t momentCount = 0;
    Judgement judgement;

    bool isVideo() const { return tag.kind == "video"; }
    void addMoment(const Moment& moment);
};

}  // namespace android::codecreport
