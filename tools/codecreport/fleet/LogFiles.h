// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "database/Database.h"

namespace android::codecreport {

/** One log: a file, or what log rotation made of it, oldest first. */
struct LogFile {
    std::vector<std::string> paths;
    bool isMetrics = false;
    Labels labels;
};

/**
 * The logs that are meant, folders replaced by what is in them and below, in order of their names.
 * Hidden files and databases in folders are left out. ".jsonl" files are metrics records.
 *
 * @param problems gets what cannot be read
 */
std::vector<LogFile> listLogs(const std::vector<std::string>& paths,
                              std::vector<std::string>* problems);

/**
 * Labels that a path shows, such as "{build}/{device}-*.log" of "logs/B12/tv7-monday.log". A name
 * in braces stands for at least one character and as few as will do, * for any number, neither for
 * '/'. The pattern fits the end of the path, from the beginning of a file's or folder's name on; an
 * ending that tells of compression may follow.
 */
std::optional<Labels> labelsOf(const std::string& path, const std::string& pattern);

/** False if braces do not match, or a name in them is no word. */
bool isLabelPattern(const std::string& pattern);

}  // namespace android::codecreport
