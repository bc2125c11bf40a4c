// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

#include "model/Session.h"

namespace android::codecreport {

/** Adds what the session was judged to: verdict, incidents, standing pictures, causes, cadence. */
void addVerdict(const Session& session, nlohmann::ordered_json* json);

}  // namespace android::codecreport
