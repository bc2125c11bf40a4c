// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>

namespace android::fuzz {

/**
 * What a logger must have counted, in the simplest words. Knows nothing of log lines, of the
 * service or of the report's form.
 */
class LoggerModel {
  public:
    void configure(bool isVideo, bool isAudio, bool isTunneled, bool isDecoder, bool isLogged) {
        video = isVideo;
        audio = isAudio;
        tunneled = isTunneled;
        decoder = isDecoder;
        logged = isLogged;
        reported = false;
        reset();
    }

    void reset() {
        frames = rendered = dropped = run = longest = byDisplay = 0;
        for (auto& count : pieces) count = 0;
        lastPts = segmentStart = -1;
        settling = inRun = false;
        awaiting = true;
        settleFromMs = firstInputMs = firstRenderMs = runStartMs = 0;
    }

    void input(int64_t nowMs, bool isEmpty) {
        if (!isEmpty && firstInputMs == 0) firstInputMs = nowMs;
    }

    void output(int64_t nowMs, int64_t pts, bool isEos, uint64_t count) {
        if (isEos) return;
        if (pts >= 0 && segmentStart == -1) {
            segmentStart = pts;
            frames = 0;
            settling = true;
        } else if (pts < 0 || lastPts == -1 || (lastPts <= pts && pts - lastPts <= 5000000)) {
            frames += count;
        } else {
            segmentStart = pts;
            frames = 0;
        }
        if (settleFromMs != 0 && nowMs - settleFromMs >= 501) {
            settling = false;
            settleFromMs = 0;
        }
        lastPts = pts;
    }

    void release(int64_t nowMs, bool isRendered) {
        if (!logged) return;
        if (isRendered) {
            ++rendered;
            if (awaiting) settleFromMs = nowMs;
            awaiting = false;
        } else if (decoder && !settling) {
            if (!inRun) runStartMs = nowMs;
            inRun = true;
            ++run;
        }
    }

    void render(int64_t nowMs, bool fromTunnel, int64_t pts, uint64_t count) {
        if (fromTunnel && !tunneled) return;
        if (fromTunnel) output(nowMs, pts, false, count);
        if (!decoder) return;
        if (inRun) closeRun();
        if (firstRenderMs == 0 && firstInputMs != 0 && video) {
            firstRenderMs = nowMs;
            if (settleFromMs == 0) settleFromMs = nowMs;
        }
    }

    void flush(int64_t nowMs) {
        settling = awaiting = true;
        settleFromMs = 0;
        if (!video) return;
        frames = 0;
        if (!inRun) return;
        if (nowMs - runStartMs < 300) run = 0;
        closeRun();
    }

    void formatChanged() {
        if (!decoder) return;
        if (lastPts - segmentStart > 0) frames = 0;
        segmentStart = lastPts;
    }

    void closeRun() {
        if (!logged || !decoder) return;
        dropped += run;
        if (run > longest) longest = run;
        const uint32_t sizes[] = {10, 5, 2, 1};
        for (int i = 0; i < 4; ++i) {
            for (; run >= sizes[i]; run -= sizes[i]) ++pieces[i];
        }
        inRun = false;
        runStartMs = 0;
    }

    void vendor(uint32_t value) {
        if (tunneled) {
            dropped += value;
        } else if (value != 0 && rendered > value) {
            byDisplay = rendered - value;
            dropped += byDisplay;
        }
    }

    bool video = false, audio = false, tunneled = false, decoder = false, logged = false;
    bool reported = false;

    uint64_t frames = 0;
    uint32_t rendered = 0;
    uint32_t dropped = 0;
    uint32_t byDisplay = 0;
    uint32_t longest = 0;
    /** Of 10, 5, 2 and 1 frames. */
    uint32_t pieces[4] = {};

  private:
    uint32_t run = 0;
    int64_t lastPts = -1, segmentStart = -1;
    bool settling = false, inRun = false, awaiting = true;
    int64_t settleFromMs = 0, firstInputMs = 0, firstRenderMs = 0, runStartMs = 0;
};

}  // namespace android::fuzz
