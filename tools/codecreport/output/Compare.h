// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "judging/Outcome.h"

namespace android::codecreport {

/** How much worse a value may become. */
struct Threshold {
    /** A key of a comparison, or empty for all that have no threshold of their own. */
    std::string key;
    double limit = 0;
    /** The limit is in percent of the base. */
    bool percent = false;
};

/** "KEY=5", "KEY=10%", "10%" */
std::optional<Threshold> parseThreshold(const std::string& text);

/** One value of two sessions. */
struct Comparison {
    int baseId = 0;
    int newId = 0;
    std::string codec;
    std::string key;
    double base = 0;
    double now = 0;
    /** Positive: it got worse by so much. */
    double worseBy = 0;
    bool exceeds = false;
};

struct CompareResult {
    std::vector<Comparison> values;
    /** Sessions without a counterpart, early ends and values no longer known, in words. */
    std::vector<std::string> unmatched;
    size_t pairs = 0;
    /** A value is past its limit, or something is missing that was there. */
    bool exceeds = false;
    Outcome outcome = Outcome::CANNOT_TELL;
};

/** The keys that are compared, one a line, with their unit and which way is better. */
std::string comparedKeys();
bool isComparedKey(const std::string& key);

/**
 * Compares two reports as toJson makes them, session by session: the first session of a codec tag
 * with the other side's first of that tag, and so on. A value that BASE does not know is left out;
 * one that only NEW does not know, a session that only BASE has, or one that ends early, makes NEW
 * worse. Without a
 * threshold, limits of what viewers notice hold; what the library reports only when it is not 0
 * counts as 0 in a session with a report.
 */
CompareResult compare(const nlohmann::ordered_json& base, const nlohmann::ordered_json& now,
                      const std::vector<Threshold>& thresholds);

std::string toText(const CompareResult& result);
nlohmann::ordered_json toJson(const CompareResult& result);

}  // namespace android::codecreport
