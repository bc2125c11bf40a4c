// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

namespace android::codecreport {

/**
 * The report as the page carries it: the worst session first, and of bounded size, so that a
 * browser opens a page of thousands of sessions at once. Each session keeps its identity and its
 * verdict; the worst keep all that is drawn, those after them their incidents.
 */
nlohmann::ordered_json pageReport(const nlohmann::ordered_json& report);

}  // namespace android::codecreport
