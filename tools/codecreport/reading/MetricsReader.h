// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <map>
#include <string>
#include <string_view>

namespace android::codecreport {

/**
 * Sums up metrics records, one JSON object a line as the host's metrics sink writes them. Records
 * that differ only in their value become one row.
 *
 * Memory: kMaxRows rows; records beyond them are counted only.
 */
class MetricsReader {
  public:
    static constexpr size_t kMaxRows = 2000;

    struct Row {
        std::string schema;
        std::string name;
        std::string unit;
        std::string dimension;
        std::string package;
        /** "key=value" entries of the data set with blanks between. */
        std::string data;
        uint64_t count = 0;
        double last = 0;
        double sum = 0;
    };

    void onLine(std::string_view line);

    /** By everything that tells them apart. */
    const std::map<std::string, Row>& rows() const { return mRows; }
    uint64_t records() const { return mRecords; }
    uint64_t notUnderstood() const { return mNotUnderstood; }

  private:
    std::map<std::string, Row> mRows;
    uint64_t mRecords = 0;
    uint64_t mNotUnderstood = 0;
};

}  // namespace android::codecreport
