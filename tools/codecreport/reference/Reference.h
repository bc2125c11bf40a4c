// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "reading/Pattern.h"

namespace android::codecreport {

/** What there is to know about a log line, a field, a report key, a metrics record, a cause, ... */
struct ReferenceEntry {
    std::string id;
    /** The table that it stands in, such as "Report keys". */
    std::string table;
    /** Everything else that the table says, in its order: "line", "when", "meaning", "unit", ... */
    std::vector<std::pair<std::string, std::string>> facts;

    /** Empty if the table does not say. */
    const std::string& fact(std::string_view name) const;
};

/**
 * The one table of all that the library writes. The reader recognises lines by it, explain answers
 * from it, and documentation is made of it, so that the three cannot disagree.
 *
 * Immutable after construction.
 */
class Reference {
  public:
    struct Table {
        /** Short, for the command line. */
        std::string name;
        std::string title;
        std::string about;
        /** Log tag of tables of lines. */
        std::string tag;
        /** What of the entries a document shows; empty: all. */
        std::vector<std::string> columns;
        std::vector<ReferenceEntry> entries;
    };

    enum class Match {
        /** Not one of the library's lines. */
        NO,
        YES,
        /** The library's tag or beginning, and cut off. */
        CUT_OFF,
        /** The library's tag, and none of its lines. */
        UNKNOWN,
    };

    Reference();

    /**
     * Recognises a line of the library.
     *
     * @param tag empty where the log's form has none: then lines of all tags are looked for
     * @param entry for lines of the report, the entry of their key; their fields are "prefix" and
     *     "value"
     */
    Match recognise(std::string_view tag, std::string_view text, const ReferenceEntry** entry,
                    Fields* fields) const;

    const std::vector<Table>& tables() const { return mTables; }

    /** The line of the status text that this is, or nullptr. */
    const ReferenceEntry* statusLine(std::string_view text, Fields* fields) const;

    /** The line, or nullptr. */
    const ReferenceEntry* line(std::string_view id) const;

  private:
    struct Line {
        Pattern pattern;
        const ReferenceEntry* entry;
    };

    void addTable(const char* name, std::string_view json);
    bool matchReportKey(std::string_view text, const ReferenceEntry** entry, Fields* fields) const;

    std::vector<Table> mTables;
    /** Lines by tag, in the order of their table: the first that matches wins. */
    std::unordered_map<std::string, std::vector<Line>> mLines;
    std::vector<Line> mStatusLines;
    const Table* mReportKeys = nullptr;
};

}  // namespace android::codecreport
