// SPDX-License-Identifier: Apache-2.0
#include "judging/Usual.h"

#include <math.h>
#include <stdlib.h>

#include <algorithm>

namespace android::codecreport {

namespace {

constexpr int64_t kMaxStepUs = 5'000'000;
// Lines show whole milliseconds, so a distance is off by less than one.
constexpr double kGrainUs = 1050;
// More than a refresh, so that no cadence is taken for a fault.
constexpr int64_t kGrainOfPairUs = 2000;

/** Fits distances of render times to the grids of usual displays. */
class GridFit {
  public:
    void add(int64_t distanceUs) {
        // Over a long distance a small error of the period adds up.
        if (distanceUs <= 4000 || distanceUs > 200'000) return;
        ++mCount;
        for (size_t i = 0; i < kCount; ++i) {
            const double period = 1e6 / kRatesHz[i];
            const double refreshes = round(distanceUs / period);
            const double off = fabs(distanceUs - refreshes * period);
            if (off > kGrainUs || refreshes == 0) continue;
            ++mFits[i];
            mSquares[i] += off * off;
            mDistancesUs[i] += distanceUs;
            mRefreshes[i] += refreshes;
        }
    }

    Grid best(int64_t stepUs) const {
        Grid grid;
        // The slowest one that fits: each fits the multiples of its rate as well.
        for (size_t i = 0; i < kCount && mCount >= 20; ++i) {
            if (mFits[i] < mCount * 0.97) continue;
            // The mean tells 59.94 from 60.
            const double period = mDistancesUs[i] / mRefreshes[i];
            const double steps = stepUs / period;
            grid.isOwn = period > kSlowUs && fabs(steps - round(steps)) < 0.01;
            if (!grid.isOwn) {
                grid.periodUs = period;
                grid.jitterMs = sqrt(mSquares[i] / mFits[i]) / 1000;
            }
            break;
        }
        return grid;
    }

  private:
    static constexpr double kRatesHz[] = {24, 25, 30, 48, 50, 60, 72, 90, 120};
    // Displays are faster; pictures that come in such a rhythm show their own.
    static constexpr double kSlowUs = 21'000;
    static constexpr size_t kCount = sizeof(kRatesHz) / sizeof(kRatesHz[0]);
    double mSquares[kCount] = {};
    double mDistancesUs[kCount] = {};
    double mRefreshes[kCount] = {};
    uint64_t mFits[kCount] = {};
    uint64_t mCount = 0;
};

/** The mean of steps between frames where they are even; a median alone has the grain of a count.
 */
class StepFit {
  public:
    void add(int64_t stepUs) {
        mMs.add(stepUs / 100);
        if (llabs(stepUs - mLastUs) < 2000) {
            mSumUs += stepUs;
            ++mCount;
        }
        mLastUs = stepUs;
    }
    int64_t stepUs() const {
        if (mMs.count() < 5) return 0;
        const int64_t medianUs = mMs.percentile(0.5) * 100;
        if (mCount == 0) return medianUs;
        const int64_t meanUs = mSumUs / static_cast<int64_t>(mCount);
        return llabs(meanUs - medianUs) < medianUs / 10 ? meanUs : medianUs;
    }

  private:
    Histogram mMs;
    int64_t mLastUs = 0;
    int64_t mSumUs = 0;
    uint64_t mCount = 0;
};

}  // namespace

int64_t asSoonAsUs(const Frame& frame) {
    return std::max(frame.displayUs, frame.renderCallUs);
}

Usual usualOf(const Session& session, const FrameStore& store) {
    StepFit steps;
    GridFit grid;
    Histogram outLeadMs;
    Histogram inside;
    Histogram workMs;
    Histogram idleMs;
    Histogram waitMs;
    Histogram unevenMs;
    const auto onFrame = [&, last = Frame(), lastRendered = Frame()](const Frame& frame) mutable {
        if (!frame.hasFate()) return;
        const int64_t stepUs = frame.ptsUs - last.ptsUs;
        const bool follows = last.hasFate() && stepUs > 0 && stepUs <= kMaxStepUs;
        if (follows) steps.add(stepUs);
        if (frame.insideBefore >= 0) inside.add(frame.insideBefore);
        if (follows && frame.codecOutUs != kNoTime && last.codecOutUs != kNoTime) {
            // Of what more it had to wait for, only that is known when all is.
            const int64_t startUs = std::max(last.codecOutUs, frame.queuedUs);
            workMs.add((frame.codecOutUs - startUs) / 1000);
            idleMs.add((startUs - last.codecOutUs) / 1000);
            waitMs.add(frame.dequeueWaitUs / 1000);
        }
        last = frame;
        if (!frame.rendered) return;
        // A render time that had passed already was not the one that counted.
        const bool isClock = frame.displayUs > frame.renderCallUs;
        const bool inTime = isClock && lastRendered.displayUs > lastRendered.renderCallUs;
        if (follows && inTime) grid.add(frame.displayUs - lastRendered.displayUs);
        if (follows && lastRendered.rendered && lastRendered.ptsUs == frame.ptsUs - stepUs) {
            const int64_t shown = asSoonAsUs(frame) - asSoonAsUs(lastRendered);
            unevenMs.add(llabs(shown - stepUs) / 1000);
        }
        if (frame.codecOutUs != kNoTime) {
            outLeadMs.add((asSoonAsUs(frame) - frame.codecOutUs) / 1000);
        }
        lastRendered = frame;
    };
    store.read(session.id, onFrame);

    Usual usual;
    usual.stepUs = steps.stepUs();
    for (size_t i = 0; i < kStageCount; ++i) {
        usual.stageUs[i] = session.stages[i].percentile(0.5) * 1000;
    }
    usual.hasStages = session.stages[static_cast<size_t>(Stage::APP)].count() > 0;
    usual.hasDecrypt = session.stages[static_cast<size_t>(Stage::DECRYPT)].count() > 0;
    usual.outLeadUs = outLeadMs.percentile(0.5) * 1000;
    usual.workUs = workMs.percentile(0.5) * 1000;
    usual.idleUs = idleMs.percentile(0.5) * 1000;
    if (inside.count() > 0) usual.insideBefore = inside.percentile(0.5);
    usual.dequeueWaitUs = waitMs.percentile(0.5) * 1000;
    usual.grid = grid.best(usual.stepUs);
    // Without a grid applications are as even as their threads are.
    const int64_t unevenUs = usual.grid.periodUs > 0 ? 0 : unevenMs.percentile(0.75) * 3000;
    usual.toleranceUs = std::max(usual.grid.refreshUs() + kGrainOfPairUs, unevenUs);
    return usual;
}

}  // namespace android::codecreport
