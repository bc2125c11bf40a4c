// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <android/codeclogger/ClientEntry.h>
#include <tools/codeclogger/Within.h>

namespace android::codeclogger {

/** CLOCK_MONOTONIC in milliseconds, as in the service and the codecs. */
int64_t nowMs();

/** Whether a codec could be asked. */
enum class Answer {
    GIVEN,
    ENDED,    // its logger is gone, and only its registration is left
    DIED,     // its process is gone
    STOPPED,  // its process is stopped, as by a debugger
    SILENT,   // its process did not answer in time
};

/** What each Answer is called in JSON, and where the age of the last frame would stand. */
struct AnswerWords {
    const char* inJson;
    const char* inText;
};
constexpr AnswerWords kAnswerWords[] = {{"given", nullptr},
                                        {"ended", "ended"},
                                        {"died", "died"},
                                        {"stopped", "stopped"},
                                        {"none", "no answer"}};

/** One codec: what the service knows of it, and what it answered itself. */
struct CodecInfo {
    ClientEntry entry{};
    Answer answer = Answer::SILENT;

    // The rest only when the answer was given.

    /** For people, lines that start with a tab. */
    std::string status;
    int width = 0;
    int height = 0;
    std::string hdrType;
    std::string scanType;
    int bitDepth = 0;
    int colorStandard = 0;
    /** -1 before the first frame, and for codecs whose frames are not rendered one by one. */
    int64_t msSinceLastFrame = -1;
    /** Since the last flush or seek. */
    int64_t frames = 0;
    bool secureMemory = false;

    // Out of the status text.
    int64_t bitrateKbps = 0;
    double framerate = 0;
    int64_t framesDropped = 0;

    /** "com.app (pid 12), video hevc 3840x2160": what tells it from others. */
    std::string describe() const;
    /** "1920x1080", or "-" where there is none. */
    std::string resolution() const;
    /** When the last frame was, or why that is not known. */
    std::string lastFrame() const;
};

/** Takes bitrate, frame rate and drops from `info->status`. */
void readStatusText(CodecInfo* info);

/** How long `answered` is ago to a codec that was asked at `askedMs`; -1 if it is no time. */
int64_t frameAgeMs(int64_t answered, int64_t askedMs);

/**
 * Asks codecs about themselves, all at once, each on a thread of its own, because a process that is
 * stopped or hangs never answers. A codec that still owes an answer is not asked again.
 * Thread-safe.
 */
class CodecQuery {
  public:
    /** In the order of the entries. */
    std::vector<CodecInfo> ask(const std::vector<ClientEntry>& entries, int64_t timeoutMs = 1000);

  private:
    std::mutex mLock;
    std::map<int32_t, std::shared_ptr<Pending<CodecInfo>>> mOwed;  // by handle
};

}  // namespace android::codeclogger
