// SPDX-License-Identifier: Apache-2.0
#include "judging/Judge.h"

#include <stdio.h>

#include <algorithm>

namespace android::codecreport {

namespace {

Cause causeOf(OldCause cause) {
    static constexpr Cause kCauses[] = {
            Cause::INPUT_STARVED, Cause::DECRYPTION,    Cause::CODEC,  Cause::MESSAGE_DELAY,
            Cause::APPLICATION,   Cause::DISPLAY_QUEUE, Cause::UNKNOWN};
    return kCauses[static_cast<size_t>(cause)];
}

}  // namespace

void judge(Session* session) {
    Judgement& judgement = session->judgement;
    judgement = Judgement();
    double lostMs = 0;
    for (const Freeze& freeze : session->freezes) {
        Incident incident;
        incident.id = ++judgement.incidentCount;
        incident.startUs = freeze.startUs;
        incident.endUs = freeze.startUs + freeze.durationMs * 1000;
        incident.ptsUs = freeze.ptsUs;
        incident.stoodMs = freeze.durationMs;
        incident.cause = causeOf(freeze.verdict.cause);
        incident.shares[static_cast<size_t>(incident.cause)] = 1;
        incident.evidence = freeze.verdict.text;
        judgement.incidents.push_back(incident);
        CauseTotal& total = judgement.causes[static_cast<size_t>(incident.cause)];
        ++total.incidents;
        total.stoodMs += freeze.durationMs;
        lostMs += freeze.durationMs;
        Standing& standing = judgement.standing;
        ++standing.count;
        standing.totalMs += freeze.durationMs;
        if (freeze.durationMs > standing.longestMs) {
            standing.longestMs = freeze.durationMs;
            standing.longestAtUs = freeze.startUs;
        }
    }
    for (CauseTotal& total : judgement.causes)
        total.share = lostMs > 0 ? total.stoodMs / lostMs : 0;
    // The log begins in its midst.
    if (session->startedBefore) {
        judgement.atLeast = {"counts.rendered_count", "counts.dropped_count", "incident_count"};
    }
    if (session->rendered > 0) {
        judgement.word = judgement.incidentCount > 0 ? Word::STUTTERED : Word::SMOOTH;
    }
    char text[160];
    snprintf(text, sizeof(text), "%zu incidents, the picture stood %.1f s", session->freezes.size(),
             lostMs / 1000);
    judgement.sentence = text;
}

}  // namespace android::codecreport
