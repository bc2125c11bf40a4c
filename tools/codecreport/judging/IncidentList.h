// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "judging/Attribution.h"

namespace android::codecreport {

/**
 * Puts what went wrong with single frames together to incidents: what follows within
 * kJoinUs belongs to the one before.
 */
class IncidentList {
  public:
    static constexpr int64_t kJoinUs = 250'000;

    /** @param usual outlives the list */
    explicit IncidentList(const Usual& usual) : mUsual(usual) {}

    /** Something went wrong with a frame that was due from `dueUs`; the incident that it is in. */
    uint64_t add(const LateFrame& late, int64_t dueUs, int64_t untilUs, Place place);
    /** More of the incident that is open. */
    Incident& open() { return mOpen; }
    bool isOpen() const { return mIsOpen; }
    /** Time lost by a cause, and the frame that shows it. */
    void lose(const Lost& lost, const LateFrame& late);
    /** Other words for a cause than the frame's. */
    void explain(Cause cause, std::string text);
    /** All is well at this time; true if that closes an incident. */
    bool onGood(int64_t timeUs);
    /** Closes the open incident and hands all over. */
    void finish(Judgement* judgement);

  private:
    void close();
    void keepWorst(size_t count);

    const Usual& mUsual;
    bool mIsOpen = false;
    Incident mOpen;
    Lost mLost{};
    /** Most time lost at once by each cause, and its evidence. */
    Lost mMost{};
    std::array<std::string, kCauseCount> mEvidence;
    uint64_t mCount = 0;
    std::vector<Incident> mIncidents;
    std::array<CauseTotal, kCauseCount> mCauses{};
    double mLostUs = 0;
};

}  // namespace android::codecreport
