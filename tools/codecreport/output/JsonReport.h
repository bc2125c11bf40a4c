// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "Analysis.h"

namespace android::codecreport {

/** Raised when a key changes its meaning or goes; new keys leave it. */
constexpr int kSchemaVersion = 2;

/**
 * The whole analysis as JSON: units stand in the keys, times of a session count from its beginning,
 * what the log does not tell is null or left out. The keys are explained in
 * reference/report-json.json.
 */
nlohmann::ordered_json toJson(const Analysis& analysis);

/** As one text; bytes that are no UTF-8 are replaced. */
std::string dump(const nlohmann::ordered_json& json, bool pretty);

}  // namespace android::codecreport
