// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tuple>

#include "model/Session.h"

namespace android::codecreport {

/** How bad a session was: the worst stands first on the page and keeps what is drawn of it. */
struct Severity {
    /** Nothing where there was nothing to judge, sound for instance. */
    std::optional<Word> word;
    double stoodMs = 0;
    double neverShown = 0;
    double incidents = 0;
    double errors = 0;

    bool operator>(const Severity& other) const { return key() > other.key(); }

  private:
    std::tuple<int, double, double, double, double> key() const {
        return {rank(), stoodMs, neverShown, incidents, errors};
    }
    int rank() const {
        if (!word) return 0;
        switch (*word) {
            case Word::SMOOTH:
                return 1;
            case Word::CANNOT_TELL:
                return 2;
            case Word::STUTTERED:
                return 3;
            case Word::BROKE_OFF:
                return 4;
        }
        return 0;
    }
};

inline Severity severityOf(const Session& session) {
    Severity severity;
    const Judgement& judgement = session.judgement;
    if (session.isVideo()) severity.word = judgement.word;
    for (const CauseTotal& total : judgement.causes) severity.stoodMs += total.stoodMs;
    severity.neverShown = judgement.neverShown.value_or(0);
    severity.incidents = judgement.incidentCount;
    severity.errors = session.errors;
    return severity;
}

}  // namespace android::codecreport
