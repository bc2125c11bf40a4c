// SPDX-License-Identifier: Apache-2.0
// How codecs are shown, as text for people and in two forms for programs.
#pragma once

#include <string>
#include <vector>

#include <codeclogger/Allowlist.h>
#include <codeclogger/ServiceState.h>
#include <nlohmann/json_fwd.hpp>

#include "CodecInfo.h"

namespace codecloggerctl {

/** Changes with every change of the JSON that a reader could trip over. */
inline constexpr int kSchemaVersion = 1;

/** Columns as wide as their widest cell, the last one open; numbers flush right. */
class TextTable {
  public:
    explicit TextTable(std::vector<std::string> header) { mRows.push_back(std::move(header)); }
    void add(std::vector<std::string> row) { mRows.push_back(std::move(row)); }
    std::string text() const;

  private:
    std::vector<std::vector<std::string>> mRows;
};

/** Writes to standard output at once; false, with a message, when that fails. */
bool print(const std::string& text);

/** The client id as status takes it. */
std::string idText(int64_t id);

std::string listText(const std::vector<CodecInfo>& codecs);
std::string statusText(const std::vector<CodecInfo>& codecs);
std::string allowlistText(const codeclogger::Allowlist& allowlist);

nlohmann::ordered_json codecJson(const CodecInfo& codec);
nlohmann::ordered_json stateJson(const codeclogger::ServiceState& state,
                                 const std::vector<CodecInfo>& codecs);
nlohmann::ordered_json allowlistJson(const codeclogger::Allowlist& allowlist);
/**
 * In several lines for people who look at it, or in one. What is not UTF-8 in the texts of other
 * processes is replaced.
 */
std::string dump(const nlohmann::ordered_json& json, bool inOneLine);

std::string openMetricsText(const codeclogger::ServiceState& state,
                            const std::vector<CodecInfo>& codecs);

}  // namespace codecloggerctl
