// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Process.h"

namespace android::test {

using Json = nlohmann::ordered_json;

/** A file of this test case with this content; its path. */
std::string fileWith(const std::string& content, const std::string& name = "log");

/** Runs the program. */
ProcessResult codecreport(std::vector<std::string> arguments);

/** Fails unless `actual` holds all values of this JSON text; its objects may hold others besides.
 */
void expectHas(const char* expected, const Json& actual);

/** The report that codecreport makes of these files. */
Json reportOfFiles(const std::vector<std::string>& paths);

/** The report that codecreport makes of a log. */
Json reportOf(const std::string& log);

/** Lines of a threadtime log of process 4321 and thread 4330, one second apart from each other. */
std::string threadtime(const std::vector<std::pair<const char*, std::string>>& tagsAndTexts);

}  // namespace android::test
