// SPDX-License-Identifier: Apache-2.0
#include "database/Query.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <deque>
#include <vector>

#include "output/JsonReport.h"

namespace android::codecreport {

namespace {

constexpr size_t kMeasuredRows = 1000;
constexpr size_t kMaxWidth = 60;

std::string realText(double value) {
    char text[40];
    // The shortest of these that is the value again.
    for (const int digits : {15, 17}) {
        snprintf(text, sizeof(text), "%.*g", digits, value);
        if (strtod(text, nullptr) == value) break;
    }
    return text;
}

std::vector<std::string> namesOf(const Statement& row) {
    std::vector<std::string> names(row.columnCount());
    for (size_t i = 0; i < names.size(); ++i) names[i] = row.name(static_cast<int>(i));
    return names;
}

/** What a person reads; nothing for null. */
std::string cellText(const Statement& row, int column) {
    switch (row.type(column)) {
        case SQLITE_NULL:
            return "";
        case SQLITE_FLOAT:
            return realText(row.real(column));
        case SQLITE_BLOB:
            return "(" + std::to_string(row.text(column).size()) + " bytes)";
        default:
            return std::string(row.text(column));
    }
}

std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

std::string csvLine(const std::vector<std::string>& cells) {
    std::string line;
    for (const std::string& cell : cells) line += csvCell(cell) + ',';
    line.back() = '\n';
    return line;
}

std::string jsonLine(const Statement& row) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    for (int i = 0; i < row.columnCount(); ++i) {
        auto& value = json[row.name(i)];
        switch (row.type(i)) {
            case SQLITE_NULL:
                break;
            case SQLITE_INTEGER:
                value = row.integer(i);
                break;
            case SQLITE_FLOAT:
                value = row.real(i);
                break;
            default:
                value = cellText(row, i);
        }
    }
    return dump(json, false) + "\n";
}

/** Characters, not bytes. */
size_t widthOf(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; });
}

/** Rows side by side: numbers to the right, texts to the left. */
class TableText {
  public:
    explicit TableText(const Statement& row) : mWidths(row.columnCount()) {
        hold(namesOf(row), std::vector<bool>(mWidths.size()));
    }

    /** Lines that are complete now. */
    std::string add(const Statement& row) {
        std::vector<std::string> cells;
        std::vector<bool> right;
        for (int i = 0; i < row.columnCount(); ++i) {
            cells.push_back(cellText(row, i));
            for (char& c : cells.back()) {
                if (iscntrl(static_cast<unsigned char>(c)) != 0) c = ' ';
            }
            right.push_back(row.type(i) == SQLITE_INTEGER || row.type(i) == SQLITE_FLOAT);
        }
        if (mFlushed) return line(cells, right);
        hold(std::move(cells), std::move(right));
        return mHeld.size() <= kMeasuredRows ? "" : flush();
    }

    std::string flush() {
        std::string text;
        // Names stand as the first row's values do.
        if (mRight.size() > 1) mRight[0] = mRight[1];
        for (size_t i = 0; i < mHeld.size(); ++i) text += line(mHeld[i], mRight[i]);
        mFlushed = true;
        mHeld.clear();
        return text;
    }

  private:
    void hold(std::vector<std::string> cells, std::vector<bool> right) {
        for (size_t i = 0; i < cells.size(); ++i) {
            mWidths[i] = std::min(kMaxWidth, std::max(mWidths[i], widthOf(cells[i])));
        }
        mHeld.push_back(std::move(cells));
        mRight.push_back(std::move(right));
    }

    std::string line(const std::vector<std::string>& cells, const std::vector<bool>& right) const {
        std::string text;
        for (size_t i = 0; i < cells.size(); ++i) {
            const size_t width = widthOf(cells[i]);
            const std::string blanks(mWidths[i] - std::min(mWidths[i], width), ' ');
            text += (i == 0 ? "" : "  ") + (right[i] ? blanks + cells[i] : cells[i] + blanks);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text + "\n";
    }

    std::vector<size_t> mWidths;
    std::deque<std::vector<std::string>> mHeld;
    std::deque<std::vector<bool>> mRight;
    bool mFlushed = false;
};

}  // namespace

bool writeQuery(Database* database, const std::string& sql, RowForm form, OutputFile* output,
                std::string* error) {
    Statement query;
    if (!database->prepare(sql, &query)) {
        *error = database->error();
        return false;
    }
    if (std::string_view(query.tail()).find_first_not_of("; \t\r\n") != std::string_view::npos) {
        *error = "one statement at a time; there is more: " + std::string(query.tail());
        return false;
    }
    if (sqlite3_stmt_readonly(query.get()) == 0) {
        *error = "a query reads only";
        return false;
    }
    TableText table(query);
    std::vector<std::string> cells = namesOf(query);
    bool ok = form != RowForm::CSV || output->write(csvLine(cells));
    while (ok && query.step()) {
        if (form == RowForm::JSON_LINES) {
            ok = output->write(jsonLine(query));
        } else if (form == RowForm::TABLE) {
            ok = output->write(table.add(query));
        } else {
            for (int i = 0; i < query.columnCount(); ++i) cells[i] = cellText(query, i);
            ok = output->write(csvLine(cells));
        }
    }
    if (ok && !query.isDone()) {
        *error = sqlite3_errmsg(database->handle());
        return false;
    }
    if (form == RowForm::TABLE) ok = ok && output->write(table.flush());
    if (!ok) *error = output->error();
    return ok;
}

}  // namespace android::codecreport
