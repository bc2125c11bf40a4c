// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Session.h"

namespace android::codecreport {

/** Judges a session when all is known of it. */
void judge(Session* session);

}  // namespace android::codecreport
