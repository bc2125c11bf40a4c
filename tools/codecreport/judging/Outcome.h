// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ExitCode.h"

namespace android::codecreport {

/** What a comparison comes to, of two sessions as of two sets of them. */
enum class Outcome { BETTER, SAME, WORSE, CANNOT_TELL };

constexpr const char* toString(Outcome outcome) {
    constexpr const char* kWords[] = {"better", "same", "worse", "cannot tell"};
    return kWords[static_cast<int>(outcome)];
}

constexpr ExitCode exitCode(Outcome outcome) {
    return outcome == Outcome::WORSE         ? ExitCode::WORSE
           : outcome == Outcome::CANNOT_TELL ? ExitCode::CANNOT_TELL
                                             : ExitCode::OK;
}

}  // namespace android::codecreport
