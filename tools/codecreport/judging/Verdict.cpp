// SPDX-License-Identifier: Apache-2.0
#include "judging/Verdict.h"

#include <inttypes.h>
#include <math.h>
#include <stdio.h>

#include <algorithm>

namespace android::codecreport {

namespace {

/** "3:2" for 2.5: how many refreshes pictures stay for in turn. */
std::string patternOf(double refreshes) {
    for (int pictures = 1; pictures <= 5; ++pictures) {
        const double sum = refreshes * pictures;
        if (fabs(sum - round(sum)) > 0.01 * sum || round(sum) < pictures) continue;
        const int total = static_cast<int>(round(sum));
        std::string pattern;
        for (int i = 0; i < pictures; ++i) {
            // The longer ones first, spread evenly.
            const int stays = (total * (i + 1) + pictures - 1) / pictures -
                              (total * i + pictures - 1) / pictures;
            pattern += (i > 0 ? ":" : "") + std::to_string(stays);
        }
        return pattern;
    }
    return "";
}

std::string counted(uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string seconds(double ms) {
    char text[40];
    snprintf(text, sizeof(text), ms < 995 ? "%.0f ms" : "%.1f s", ms < 995 ? ms : ms / 1000);
    return text;
}

/** "application 86 %, codec 14 %", the largest first. */
std::string sharesOf(const Judgement& judgement) {
    std::vector<size_t> order;
    for (size_t i = 0; i < kCauseCount; ++i) {
        if (judgement.causes[i].share >= 0.005) order.push_back(i);
    }
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return judgement.causes[a].share > judgement.causes[b].share;
    });
    std::string text;
    for (const size_t i : order) {
        char part[60];
        snprintf(part, sizeof(part), "%s%s %.0f %%", text.empty() ? "" : ", ",
                 inWords(static_cast<Cause>(i)), judgement.causes[i].share * 100);
        text += part;
    }
    return text;
}

std::string sentenceOf(const Session& session, const Judgement& judgement) {
    if (judgement.incidentCount == 0) {
        if (judgement.word == Word::CANNOT_TELL) return "the log does not tell how it played";
        return "every picture was shown in its time";
    }
    double stoodMs = 0;
    double neverShown = 0;
    for (const CauseTotal& total : judgement.causes) {
        stoodMs += total.stoodMs;
        neverShown += total.neverShown;
    }
    std::string text = counted(judgement.incidentCount, "incident", "incidents");
    if (session.rendered == 0) {
        return text + " at least, " + counted(session.dropped, "picture", "pictures") +
               " dropped; " + sharesOf(judgement);
    }
    if (stoodMs >= 1) {
        text += ", the picture stood " + seconds(stoodMs);
        if (judgement.playbackMs.value_or(0) > 0) {
            char part[20];
            snprintf(part, sizeof(part), " (%.2g %%)", 100 * stoodMs / *judgement.playbackMs);
            text += part;
        }
    }
    if (neverShown >= 0.5) {
        text += ", " + counted(static_cast<uint64_t>(round(neverShown)), "picture", "pictures") +
                " never shown";
    }
    return text + "; " + sharesOf(judgement);
}

}  // namespace

void addCadence(const Usual& usual, Judgement* judgement) {
    Cadence& cadence = judgement->cadence;
    if (usual.stepUs > 0) cadence.contentFps = 1e6 / usual.stepUs;
    if (usual.grid.isOwn) cadence.even = true;
    if (usual.grid.periodUs <= 0) return;
    cadence.displayHz = 1e6 / usual.grid.periodUs;
    cadence.vsyncJitterMs = usual.grid.jitterMs;
    if (usual.stepUs <= 0) return;
    const double refreshes = usual.stepUs / usual.grid.periodUs;
    cadence.pattern = patternOf(refreshes);
    cadence.even = round(refreshes) >= 1 && fabs(refreshes - round(refreshes)) < 0.01;
}

void addWords(const Session& session, Judgement* judgement) {
    const bool sawPictures = session.rendered > 0;
    const bool brokeOff = !judgement->incidents.empty() && judgement->incidents.back().openEnded;
    if (brokeOff) {
        judgement->word = Word::BROKE_OFF;
    } else if (judgement->incidentCount > 0) {
        judgement->word = Word::STUTTERED;
    } else {
        judgement->word = sawPictures ? Word::SMOOTH : Word::CANNOT_TELL;
    }
    if (session.isVideo() && !sawPictures) {
        judgement->missing = "mediaanalytic.enable true, mediaanalytic.debug 0x4 (render lines)";
    } else if (session.isVideo() && session.stages[static_cast<size_t>(Stage::APP)].count() == 0) {
        judgement->missing = "mediaanalytic.debug 0x2 (what each frame spent its time on)";
    }
    if (session.startedBefore) {
        judgement->atLeast = {"counts.rendered_count", "counts.dropped_count", "incident_count"};
    } else if (session.isVideo() && !sawPictures) {
        judgement->atLeast = {"incident_count", "counts.dropped_count"};
    }
    judgement->sentence = sentenceOf(session, *judgement);
}

}  // namespace android::codecreport
