// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Options.h"

namespace android::codecreport {

/** Is this a command on databases or on sets of logs? */
bool isFleetCommand(const std::string& word);

/** What is missing on the command line; empty: nothing. */
std::string checkFleetCommand(const Options& options);

/** @return exit code */
int runFleetCommand(const Options& options);

}  // namespace android::codecreport
