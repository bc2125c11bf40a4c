// SPDX-License-Identifier: Apache-2.0
// How codecs are shown, as text for people and in two forms for programs.
#pragma once

#include <string>
#include <vector>

#include <android/codeclogger/Allowlist.h>
#include <android/codeclogger/ServiceState.h>
#include <tools/codeclogger/CodecInfo.h>
#include <tools/codeclogger/Json.h>

namespace android::codeclogger {

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

/** The client id as status takes it. */
std::string idText(int64_t id);

std::string listText(const std::vector<CodecInfo>& codecs);
std::string statusText(const std::vector<CodecInfo>& codecs);
std::string allowlistText(const Allowlist& allowlist);

Json codecJson(const CodecInfo& codec);
Json stateJson(const ServiceState& state, const std::vector<Json>& codecs);
Json allowlistJson(const Allowlist& allowlist);

std::string openMetricsText(const ServiceState& state, const std::vector<CodecInfo>& codecs);

}  // namespace android::codeclogger
