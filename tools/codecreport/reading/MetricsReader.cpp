// SPDX-License-Identifier: Apache-2.0
#include "reading/MetricsReader.h"

#include <nlohmann/json.hpp>

namespace android::codecreport {

namespace {

std::string text(const nlohmann::json& json, const char* key) {
    const auto it = json.find(key);
    return it != json.end() && it->is_string() ? it->get<std::string>() : std::string();
}

}  // namespace

void MetricsReader::onLine(std::string_view line) {
    if (line.empty()) return;
    const auto json = nlohmann::json::parse(line, nullptr, false);
    const auto value = json.is_object() ? json.find("value") : json.end();
    if (!json.is_object() || value == json.end() || !value->is_number() ||
        text(json, "name").empty()) {
        ++mNotUnderstood;
        return;
    }
    ++mRecords;
    Row row;
    row.schema = text(json, "schema");
    row.name = text(json, "name");
    row.unit = text(json, "unit");
    row.dimension = text(json, "dimension");
    row.package = text(json, "package");
    const auto data = json.find("data");
    if (data != json.end() && data->is_object()) {
        for (const auto& [key, entry] : data->items()) {
            if (!row.data.empty()) row.data += ' ';
            row.data += key + '=' + (entry.is_string() ? entry.get<std::string>() : entry.dump());
        }
    }
    std::string key;
    for (const std::string* part :
         {&row.name, &row.dimension, &row.data, &row.package, &row.schema, &row.unit}) {
        key += *part + '\0';
    }
    auto it = mRows.find(key);
    if (it == mRows.end()) {
        if (mRows.size() == kMaxRows) return;
        it = mRows.emplace(key, std::move(row)).first;
    }
    ++it->second.count;
    it->second.last = value->get<double>();
    it->second.sum += it->second.last;
}

}  // namespace android::codecreport
