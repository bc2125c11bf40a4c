// SPDX-License-Identifier: Apache-2.0
#include "reference/Reference.h"

#include <nlohmann/json.hpp>

#include "Resources.h"

namespace android::codecreport {

namespace {

const std::string kNoFact;

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

const std::string& ReferenceEntry::fact(std::string_view name) const {
    for (const auto& [key, value] : facts) {
        if (key == name) return value;
    }
    return kNoFact;
}

Reference::Reference() {
    const std::pair<const char*, std::string_view> tables[] = {
            {"logger", resources::loggerLines()},   {"analytics", resources::analyticsLines()},
            {"service", resources::serviceLines()}, {"status", resources::statusLines()},
            {"fields", resources::fields()},        {"analysis", resources::analysisFields()},
            {"history", resources::history()},      {"report", resources::reportKeys()},
            {"metrics", resources::metrics()},      {"settings", resources::settings()},
            {"debug", resources::debugMask()},      {"causes", resources::causes()},
            {"verdicts", resources::verdicts()},    {"json", resources::reportJson()},
    };
    // Entries are referred to by pointer from here on.
    mTables.reserve(std::size(tables));
    for (const auto& [name, json] : tables) addTable(name, json);
    for (const Table& table : mTables) {
        if (table.name == "report") mReportKeys = &table;
    }
}

void Reference::addTable(const char* name, std::string_view text) {
    const auto json = nlohmann::ordered_json::parse(text);
    Table& table = mTables.emplace_back();
    table.name = name;
    table.title = json["title"];
    table.about = json.value("about", "");
    table.tag = json.value("tag", "");
    for (const auto& column : json.value("columns", nlohmann::ordered_json::array())) {
        table.columns.push_back(column);
    }
    for (const auto& item : json["entries"]) {
        ReferenceEntry& entry = table.entries.emplace_back();
        entry.table = table.title;
        for (const auto& [key, value] : item.items()) {
            if (key == "id") {
                entry.id = value;
            } else {
                entry.facts.emplace_back(key, value);
            }
        }
    }
    if (table.name == "status") {
        for (const ReferenceEntry& entry : table.entries) {
            mStatusLines.push_back({Pattern(entry.fact("line")), &entry});
        }
    }
    if (table.tag.empty()) return;
    for (const ReferenceEntry& entry : table.entries) {
        mLines[table.tag].push_back({Pattern(entry.fact("line")), &entry});
    }
}

const ReferenceEntry* Reference::statusLine(std::string_view text, Fields* fields) const {
    for (const Line& line : mStatusLines) {
        if (line.pattern.match(text, fields) == Pattern::Result::YES) return line.entry;
    }
    return nullptr;
}

const ReferenceEntry* Reference::line(std::string_view id) const {
    for (const auto& [tag, lines] : mLines) {
        for (const Line& line : lines) {
            if (line.entry->id == id) return line.entry;
        }
    }
    return nullptr;
}

bool Reference::matchReportKey(std::string_view text, const ReferenceEntry** entry,
                               Fields* fields) const {
    const size_t equals = text.find(" = ");
    if (equals == std::string_view::npos || equals + 3 >= text.size()) return false;
    std::string_view word = text.substr(0, equals);
    if (word.find(' ') != std::string_view::npos) return false;
    for (const ReferenceEntry& key : mReportKeys->entries) {
        if (!endsWith(word, key.id) || word[word.size() - key.id.size() - 1] != '.') continue;
        word.remove_suffix(key.id.size() + 1);
        // The report's key of errors has two dots.
        while (!word.empty() && word.back() == '.') word.remove_suffix(1);
        fields->clear();
        fields->add("prefix", word, 0);
        fields->add("value", text.substr(equals + 3), 0);
        *entry = &key;
        return true;
    }
    return false;
}

Reference::Match Reference::recognise(std::string_view tag, std::string_view text,
                                      const ReferenceEntry** entry, Fields* fields) const {
    bool isOurs = false;
    bool isCut = false;
    for (const auto& [ours, lines] : mLines) {
        if (!tag.empty() && tag != ours) continue;
        isOurs = !tag.empty();
        for (const Line& line : lines) {
            const Pattern::Result result = line.pattern.match(text, fields);
            if (result == Pattern::Result::YES) {
                *entry = line.entry;
                return Match::YES;
            }
            isCut |= result == Pattern::Result::CUT_OFF;
        }
        if (ours == "MediaCodecLogger" && matchReportKey(text, entry, fields)) return Match::YES;
    }
    if (isCut && isOurs) return Match::CUT_OFF;
    return isOurs ? Match::UNKNOWN : Match::NO;
}

}  // namespace android::codecreport
