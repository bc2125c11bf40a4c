// SPDX-License-Identifier: Apache-2.0
// How codecs are shown, as text for people and in two forms for programs.
#pragma once

// Nothing here is compiled with exceptions. Texts of other processes may not be UTF-8, so they are
// always written with the handler that replaces what is not.
#define JSON_NOEXCEPTION 1

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

std::string listText(const std::vector<CodecInfo>& codecs);
std::string statusText(const std::vector<CodecInfo>& codecs);
std::string allowlistText(const codeclogger::Allowlist& allowlist);

nlohmann::ordered_json codecJson(const CodecInfo& codec);
nlohmann::ordered_json stateJson(const codeclogger::ServiceState& state,
                                 const std::vector<CodecInfo>& codecs);
nlohmann::ordered_json allowlistJson(const codeclogger::Allowlist& allowlist);
/** In several lines for people who look at it, or in one. */
std::string dump(const nlohmann::ordered_json& json, bool inOneLine);

std::string openMetricsText(const codeclogger::ServiceState& state,
                            const std::vector<CodecInfo>& codecs);

}  // namespace codecloggerctl
