// SPDX-License-Identifier: Apache-2.0
#include "Json.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

namespace android::codeclogger {

namespace {

/** Bytes of the character at the beginning of `text`, which ends with a NUL; 0 if it is none. */
size_t characterSize(const char* text) {
    const auto at = [text](size_t i) { return static_cast<uint8_t>(text[i]); };
    const auto isNext = [&](size_t i) { return (at(i) & 0xc0) == 0x80; };
    const uint8_t first = at(0);
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first < 0xe0) return isNext(1) ? 2 : 0;
    if (first >= 0xe0 && first < 0xf0) {
        // Neither a longer form of a shorter one nor half of a pair.
        const bool known = (first != 0xe0 || at(1) >= 0xa0) && (first != 0xed || at(1) < 0xa0);
        return known && isNext(1) && isNext(2) ? 3 : 0;
    }
    if (first >= 0xf0 && first < 0xf5) {
        const bool known = (first != 0xf0 || at(1) >= 0x90) && (first != 0xf4 || at(1) < 0x90);
        return known && isNext(1) && isNext(2) && isNext(3) ? 4 : 0;
    }
    return 0;
}

std::string escaped(char c) {
    constexpr char kNamed[] = "\"\\\b\f\n\r\t";
    constexpr char kNames[] = "\"\\bfnrt";
    if (const char* const named = c != '\0' ? strchr(kNamed, c) : nullptr; named != nullptr) {
        return {'\\', kNames[named - kNamed]};
    }
    if (static_cast<uint8_t>(c) >= 0x20) return {c};
    char text[8];
    snprintf(text, sizeof(text), "\\u%04x", static_cast<uint8_t>(c));
    return text;
}

}  // namespace

std::string Json::textOf(double value) {
    if (!isfinite(value)) return "null";
    char text[40];
    snprintf(text, sizeof(text), "%.15g", value);
    return text;
}

std::string Json::quoted(const std::string& text) {
    std::string out = "\"";
    for (size_t i = 0; i < text.size();) {
        const size_t size = characterSize(text.c_str() + i);
        out += size == 0 ? "\xef\xbf\xbd" : size == 1 ? escaped(text[i]) : text.substr(i, size);
        i += size == 0 ? 1 : size;
    }
    return out + "\"";
}

void Json::write(std::string* out, int indent) const {
    if (mOpen == 0) {
        *out += mText;
        return;
    }
    const bool inOneLine = indent < 0;
    const std::string lead = inOneLine ? "" : "\n" + std::string(static_cast<size_t>(indent), ' ');
    *out += mOpen;
    for (size_t i = 0; i < mMembers.size(); ++i) {
        const auto& [key, value] = mMembers[i];
        if (i > 0) *out += ',';
        *out += lead;
        if (!inOneLine) *out += "  ";
        *out += key;
        if (!key.empty()) *out += inOneLine ? ":" : ": ";
        value.write(out, inOneLine ? indent : indent + 2);
    }
    if (!mMembers.empty()) *out += lead;
    *out += mClose;
}

std::string Json::text(bool inOneLine) const {
    std::string out;
    write(&out, inOneLine ? -1 : 0);
    return out + "\n";
}

}  // namespace android::codeclogger
