// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "judging/Usual.h"

namespace android::codecreport {

void addCadence(const Usual& usual, Judgement* judgement);

/** The word and the sentence on the session; and what would have to be logged to tell more. */
void addWords(const Session& session, Judgement* judgement);

}  // namespace android::codecreport
