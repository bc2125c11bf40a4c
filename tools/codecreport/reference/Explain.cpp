// SPDX-License-Identifier: Apache-2.0
#include "reference/Explain.h"

#include <string.h>
#include <strings.h>

#include <algorithm>
#include <set>
#include <string_view>

#include "reading/LogcatParser.h"

namespace android::codecreport {

namespace {

/** "{at_ms:d}" is how the reader sees a field, "{at_ms}" how people do. */
std::string withoutTypes(const std::string& line) {
    std::string text;
    bool inField = false;
    bool inType = false;
    for (char c : line) {
        inField = c == '{' || (inField && c != '}');
        inType = inField && (inType || c == ':');
        if (!inType) text += c;
    }
    return text;
}

/** "outside_ms" of "sessions[].sync.outside_ms". */
bool isLastPart(std::string_view id, std::string_view key) {
    if (id.size() <= key.size() || id.substr(id.size() - key.size()) != key) return false;
    const char before = id[id.size() - key.size() - 1];
    return before == '.';
}

bool isNamed(const ReferenceEntry& entry, const std::string& key) {
    return strcasecmp(entry.id.c_str(), key.c_str()) == 0 || entry.fact("schema") == key ||
           entry.fact("json") == key || entry.fact("words") == key || isLastPart(entry.id, key);
}

/** "report.p5_ms" is one of "sessions[].report.*", of which the report keys' table knows more. */
std::string withoutReport(const std::string& key) {
    constexpr std::string_view kReport = "report.";
    const size_t at = key.rfind(kReport);
    return at == std::string::npos ? key : key.substr(at + kReport.size());
}

/** "causes.codec.stood_ms" is one of "sessions[].causes.*.stood_ms". */
std::string withAnyCause(const std::string& key) {
    constexpr std::string_view kCauses = "causes.";
    const size_t at = key.rfind(kCauses);
    const size_t dot = at == std::string::npos ? at : key.find('.', at + kCauses.size());
    if (dot == std::string::npos) return key;
    return key.substr(0, at + kCauses.size()) + "*" + key.substr(dot);
}

const ReferenceEntry* fieldNamed(const Reference& reference, std::string_view id) {
    for (const Reference::Table& table : reference.tables()) {
        if (table.name != "fields" && table.name != "analysis") continue;
        for (const ReferenceEntry& entry : table.entries) {
            if (entry.id == id) return &entry;
        }
    }
    return nullptr;
}

std::string describe(const Reference& reference, const ReferenceEntry& entry) {
    const std::string& see = entry.fact("see");
    if (!see.empty() && fieldNamed(reference, see) != nullptr) {
        return entry.id + ": " + describe(reference, *fieldNamed(reference, see));
    }
    std::string text = entry.id + "  (" + entry.table + ")\n";
    for (const auto& [name, value] : entry.facts) {
        text += "  " + name + ": " + (name == "line" ? withoutTypes(value) : value) + "\n";
    }
    return text;
}

/** The line of a log or of the status text, or nullptr. */
const ReferenceEntry* lineLike(const Reference& reference, const std::string& text,
                               Fields* fields) {
    LogcatParser parser(0);
    LogLine line;
    const ReferenceEntry* entry = nullptr;
    if (parser.parse(text, &line) == LogcatParser::Result::MESSAGE &&
        (reference.recognise(line.tag, line.text, &entry, fields) == Reference::Match::YES ||
         reference.recognise({}, text, &entry, fields) == Reference::Match::YES)) {
        return entry;
    }
    const size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos) return nullptr;
    return reference.statusLine(std::string_view(text).substr(begin), fields);
}

/** A line, explained with the values that it shows. */
std::string describeLine(const Reference& reference, const std::string& text) {
    Fields fields;
    const ReferenceEntry* entry = lineLike(reference, text, &fields);
    if (entry == nullptr) return {};
    std::string result = describe(reference, *entry);
    for (const Fields::Field& field : fields) {
        result += "  " + std::string(field.name) + " = " + std::string(field.text);
        const ReferenceEntry* meaning = fieldNamed(reference, field.name);
        if (meaning != nullptr) {
            const std::string& unit = meaning->fact("unit");
            result += (unit.empty() ? "" : " " + unit) + "  - " + meaning->fact("meaning");
        }
        result += "\n";
    }
    return result;
}

std::string cell(std::string text) {
    for (size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
        text.insert(at, "\\");
    }
    return text;
}

/** The table's columns, or its ids and all facts in the order in which they first occur. */
std::vector<std::string> columnsOf(const Reference::Table& table) {
    if (!table.columns.empty()) return table.columns;
    std::vector<std::string> columns = {"id"};
    for (const ReferenceEntry& entry : table.entries) {
        for (const auto& [name, value] : entry.facts) {
            if (std::find(columns.begin(), columns.end(), name) == columns.end()) {
                columns.push_back(name);
            }
        }
    }
    return columns;
}

std::string markdownOf(const Reference::Table& table, const char* heading) {
    const std::vector<std::string> columns = columnsOf(table);
    std::string text = heading + table.title + "\n\n";
    if (!table.tag.empty()) {
        text += "Log tag `" + table.tag + "`, priority info unless a level is given.\n\n";
    }
    if (!table.about.empty()) text += table.about + "\n\n";
    text += "|";
    for (const std::string& column : columns) text += " " + column + " |";
    text += "\n|";
    for (size_t i = 0; i < columns.size(); ++i) text += "---|";
    text += "\n";
    const std::set<std::string> code = {"id", "line", "json", "schema", "form", "see"};
    for (const ReferenceEntry& entry : table.entries) {
        text += "|";
        for (const std::string& column : columns) {
            const std::string& value = column == "id" ? entry.id : entry.fact(column);
            const bool isCode = code.count(column) != 0;
            text += value.empty() ? " |"
                    : isCode      ? " `" + cell(withoutTypes(value)) + "` |"
                                  : " " + cell(value) + " |";
        }
        text += "\n";
    }
    return text;
}

}  // namespace

std::string explain(const Reference& reference, const std::string& key) {
    std::string text;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            if (isNamed(entry, withAnyCause(key))) text += describe(reference, entry);
        }
    }
    if (text.empty()) text = describeLine(reference, key);
    const std::string inReport = withoutReport(key);
    return text.empty() && inReport != key ? explain(reference, inReport) : text;
}

std::string suggest(const Reference& reference, const std::string& key) {
    constexpr size_t kMax = 10;
    std::string text;
    size_t count = 0;
    for (const Reference::Table& table : reference.tables()) {
        for (const ReferenceEntry& entry : table.entries) {
            const bool isNear = strcasestr(entry.id.c_str(), key.c_str()) != nullptr ||
                                strcasestr(entry.fact("line").c_str(), key.c_str()) != nullptr;
            if (isNear && count++ < kMax) text += "  " + entry.id + "  (" + entry.table + ")\n";
        }
    }
    return text;
}

std::string markdown(const Reference& reference, const std::string& name) {
    std::string text;
    for (const Reference::Table& table : reference.tables()) {
        if (!name.empty() && table.name != name) continue;
        text += (text.empty() ? "" : "\n") + markdownOf(table, name.empty() ? "## " : "# ");
    }
    return text;
}

std::string tableNames(const Reference& reference) {
    std::string text;
    for (const Reference::Table& table : reference.tables()) {
        text += (text.empty() ? "" : " ") + table.name;
    }
    return text;
}

}  // namespace android::codecreport
