// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "ExitCode.h"
#include "Options.h"
#include "database/Database.h"

/** The commands, and what they share. */
namespace android::codecreport {

void say(const std::string& text);
/** Opens for reading; says why it cannot. */
bool openDatabase(const std::string& path, Database* database);
/** Reads logs, or folders of them, into a database; says what cannot be read. */
ExitCode addLogs(const std::vector<std::string>& paths, const Options& options, Database* database);

int compareCommand(const std::vector<std::string>& operands, const Options& options);
int fleetPageCommand(const std::vector<std::string>& operands, const Options& options);

}  // namespace android::codecreport
