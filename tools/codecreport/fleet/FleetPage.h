// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <set>
#include <string>

#include "fleet/FleetFigures.h"

namespace android::codecreport {

/** Sessions that the page leads to, if their own pages are written. */
std::set<int64_t> sessionsOfPage(const FleetFigures& figures);

/**
 * A page about all sessions, one HTML file without scripts.
 *
 * @param folder where the sessions' own pages are, as ID.html; empty: there are none
 */
std::string fleetPage(const FleetFigures& figures, const std::string& title,
                      const std::string& folder);

}  // namespace android::codecreport
