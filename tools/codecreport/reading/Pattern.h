// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace android::codecreport {

/** What the fields of a pattern matched; texts point into the line, names into the pattern. */
class Fields {
  public:
    static constexpr size_t kMax = 24;

    struct Field {
        std::string_view name;
        std::string_view text;
        int64_t number = 0;
    };

    /** 0 and empty where the pattern has no such field. */
    int64_t number(std::string_view name) const;
    double real(std::string_view name) const;
    std::string_view text(std::string_view name) const;

    const Field* begin() const { return mFields.data(); }
    const Field* end() const { return mFields.data() + mCount; }

    void clear() { mCount = 0; }
    void add(std::string_view name, std::string_view text, int64_t number);

  private:
    const Field* find(std::string_view name) const;

    std::array<Field, kMax> mFields;
    size_t mCount = 0;
};

/**
 * A log line with fields, written as it is documented: "[BRISK] {tag:w} P2 + {at_ms:d}". Types:
 * d decimal integer, f decimal fraction, x hexadecimal, w text without blanks (may be empty),
 * s any text, r the rest of the line (may be empty). w and s end where the following literal first
 * occurs.
 */
class Pattern {
  public:
    enum class Result {
        NO,
        YES,
        /** The line begins like this pattern and ends inside it. */
        CUT_OFF,
    };

    explicit Pattern(std::string_view source);

    Result match(std::string_view text, Fields* fields) const;
    size_t fieldCount() const { return mParts.size() - 1; }

  private:
    /** A literal and the field that follows it; the last part has none. */
    struct Part {
        std::string literal;
        std::string name;
        char type = '\0';
    };

    std::vector<Part> mParts;
};

}  // namespace android::codecreport
