// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "reference/Reference.h"

namespace android::codecreport {

/**
 * The report as one HTML file with everything in it: style, scripts, plotting library with its
 * licence, and what the page shows of the report as JSON.
 */
std::string htmlPage(const nlohmann::ordered_json& report, const Reference& reference);

}  // namespace android::codecreport
