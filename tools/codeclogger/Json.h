// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::codeclogger {

/**
 * A value to be written as JSON. Not a library's, because a device's tree has none that keeps the
 * order of the keys.
 */
class Json {
  public:
    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    Json(Number number) : mText(textOf(number)) {}
    /** What is not UTF-8 is replaced: the texts are those of other processes. */
    Json(const std::string& text) : mText(quoted(text)) {}
    Json(const char* text) : mText(quoted(text)) {}

    static Json object() { return Json('{', '}'); }
    static Json array(std::vector<Json> elements) {
        Json array('[', ']');
        for (Json& element : elements) array.mMembers.emplace_back("", std::move(element));
        return array;
    }

    /** Adds a member, of an object. */
    void set(const std::string& key, Json value) {
        mMembers.emplace_back(quoted(key), std::move(value));
    }

    /** In one line for programs, or in several for people who look at it; ends with a line feed. */
    std::string text(bool inOneLine) const;

  private:
    Json(char open, char close) : mOpen(open), mClose(close) {}

    static std::string textOf(bool value) { return value ? "true" : "false"; }
    static std::string textOf(double value);
    template <typename Integer>
    static std::string textOf(Integer value) {
        return std::to_string(value);
    }
    static std::string quoted(const std::string& text);
    /** `indent` is negative for one line. */
    void write(std::string* out, int indent) const;

    std::string mText;  // of what has no members
    char mOpen = 0;
    char mClose = 0;
    std::vector<std::pair<std::string, Json>> mMembers;
};

}  // namespace android::codeclogger
