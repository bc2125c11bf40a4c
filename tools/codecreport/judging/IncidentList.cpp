// SPDX-License-Identifier: Apache-2.0
#include "judging/IncidentList.h"

#include <algorithm>
#include <numeric>

namespace android::codecreport {

namespace {

// A smaller share is what the main cause did to the other stages.
constexpr double kLeastShare = 0.1;

/** What the viewer noticed of it, in milliseconds. */
int64_t badness(const Incident& incident) {
    return incident.stoodMs + 20 * (incident.neverShown + incident.late);
}

}  // namespace

uint64_t IncidentList::add(const LateFrame& late, int64_t dueUs, int64_t untilUs, Place place) {
    if (!mIsOpen) {
        mIsOpen = true;
        mOpen = Incident();
        mLost = {};
        mMost = {};
        mEvidence.fill({});
        mOpen.id = ++mCount;
        mOpen.startUs = dueUs;
        mOpen.endUs = dueUs;
        mOpen.ptsUs = late.frame().ptsUs;
        mOpen.place = place;
    }
    mOpen.endUs = std::max(mOpen.endUs, untilUs);
    return mOpen.id;
}

void IncidentList::lose(const Lost& lost, const LateFrame& late) {
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (lost[i] <= 0) continue;
        mLost[i] += lost[i];
        if (lost[i] <= mMost[i]) continue;
        mMost[i] = lost[i];
        mEvidence[i] = evidence(static_cast<Cause>(i), late, mUsual);
    }
}

void IncidentList::explain(Cause cause, std::string text) {
    mEvidence[static_cast<size_t>(cause)] = std::move(text);
}

bool IncidentList::onGood(int64_t timeUs) {
    if (!mIsOpen || timeUs - mOpen.endUs <= kJoinUs) return false;
    close();
    return true;
}

void IncidentList::close() {
    mIsOpen = false;
    const int64_t sum = std::accumulate(mLost.begin(), mLost.end(), int64_t{0});
    int64_t counted = 0;
    for (int64_t& lost : mLost) {
        if (lost < sum * kLeastShare) lost = 0;
        counted += lost;
    }
    size_t main = static_cast<size_t>(Cause::UNKNOWN);
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (counted > 0) mOpen.shares[i] = static_cast<double>(mLost[i]) / counted;
        if (mLost[i] > mLost[main]) main = i;
    }
    if (counted == 0) {
        mOpen.shares[main] = 1;
        mEvidence[main] = "nothing unusual in any stage that was logged";
    }
    mOpen.cause = static_cast<Cause>(main);
    mOpen.evidence = mEvidence[main];
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (i != main && mOpen.shares[i] > 0) mOpen.evidence += "; " + mEvidence[i];
    }
    if (mOpen.neverShown > 0) {
        mOpen.evidence += ", " + std::to_string(mOpen.neverShown) +
                          (mOpen.neverShown == 1 ? " picture" : " pictures") + " never shown";
    }
    // Where pictures only came late, the time that they were late by is what was lost.
    const double lostUs = std::max<double>(mOpen.stoodMs * 1000.0, counted);
    for (size_t i = 0; i < kCauseCount; ++i) {
        CauseTotal& total = mCauses[i];
        if (mOpen.shares[i] <= 0) continue;
        if (i == main) ++total.incidents;
        total.stoodMs += mOpen.shares[i] * mOpen.stoodMs;
        total.neverShown += mOpen.shares[i] * mOpen.neverShown;
        total.share += mOpen.shares[i] * lostUs;
    }
    mLostUs += lostUs;
    mIncidents.push_back(mOpen);
    if (mIncidents.size() >= 2 * kMaxIncidents) keepWorst(kMaxIncidents);
}

void IncidentList::keepWorst(size_t count) {
    if (mIncidents.size() <= count) return;
    std::nth_element(mIncidents.begin(), mIncidents.begin() + count, mIncidents.end(),
                     [](const Incident& a, const Incident& b) { return badness(a) > badness(b); });
    mIncidents.resize(count);
}

void IncidentList::finish(Judgement* judgement) {
    if (mIsOpen) close();
    keepWorst(kMaxIncidents);
    std::sort(mIncidents.begin(), mIncidents.end(),
              [](const Incident& a, const Incident& b) { return a.id < b.id; });
    judgement->incidents = std::move(mIncidents);
    judgement->incidentCount = mCount;
    judgement->causes = mCauses;
    for (CauseTotal& total : judgement->causes) {
        if (mLostUs > 0) total.share /= mLostUs;
    }
}

}  // namespace android::codecreport
