// SPDX-License-Identifier: Apache-2.0
#include "reading/Pattern.h"

#include <ctype.h>
#include <stdlib.h>

#include <charconv>

namespace android::codecreport {

namespace {

// A line that is cut off earlier says too little to be taken for one of ours.
constexpr size_t kMinCutOff = 6;

/** Length of the number at the beginning of the text, 0 if there is none. */
size_t readNumber(std::string_view text, char type, int64_t* number) {
    const char* end = text.data() + text.size();
    if (type == 'f') {
        double value = 0;
        const auto result = std::from_chars(text.data(), end, value);
        return result.ec == std::errc() ? result.ptr - text.data() : 0;
    }
    // What the library prints unsigned may pass the signed range.
    auto result = std::from_chars(text.data(), end, *number, type == 'x' ? 16 : 10);
    if (result.ec == std::errc::result_out_of_range) {
        uint64_t wide = 0;
        result = std::from_chars(text.data(), end, wide, type == 'x' ? 16 : 10);
        *number = static_cast<int64_t>(wide);
    }
    return result.ec == std::errc() ? result.ptr - text.data() : 0;
}

}  // namespace

const Fields::Field* Fields::find(std::string_view name) const {
    for (size_t i = 0; i < mCount; ++i) {
        if (mFields[i].name == name) return &mFields[i];
    }
    return nullptr;
}

int64_t Fields::number(std::string_view name) const {
    const Field* field = find(name);
    return field == nullptr ? 0 : field->number;
}

double Fields::real(std::string_view name) const {
    return strtod(std::string(text(name)).c_str(), nullptr);
}

std::string_view Fields::text(std::string_view name) const {
    const Field* field = find(name);
    return field == nullptr ? std::string_view() : field->text;
}

void Fields::add(std::string_view name, std::string_view text, int64_t number) {
    if (mCount < kMax) mFields[mCount++] = {name, text, number};
}

Pattern::Pattern(std::string_view source) {
    while (true) {
        Part part;
        const size_t open = source.find('{');
        part.literal = source.substr(0, open);
        if (open == std::string_view::npos) {
            mParts.push_back(part);
            return;
        }
        const size_t close = source.find('}', open);
        const std::string_view field = source.substr(open + 1, close - open - 1);
        part.name = field.substr(0, field.find(':'));
        part.type = field.back();
        source.remove_prefix(close + 1);
        mParts.push_back(part);
    }
}

Pattern::Result Pattern::match(std::string_view text, Fields* fields) const {
    fields->clear();
    const size_t whole = text.size();
    const auto isLong = [&] { return whole - text.size() >= kMinCutOff; };
    for (size_t i = 0; i < mParts.size(); ++i) {
        const Part& part = mParts[i];
        if (text.substr(0, part.literal.size()) != part.literal) {
            const bool ends = std::string_view(part.literal).substr(0, text.size()) == text;
            return ends && isLong() ? Result::CUT_OFF : Result::NO;
        }
        text.remove_prefix(part.literal.size());
        if (part.type == '\0') return text.empty() ? Result::YES : Result::NO;
        size_t length = text.size();
        int64_t number = 0;
        if (part.type == 'w' || part.type == 's') {
            const std::string& next = mParts[i + 1].literal;
            const size_t blank = part.type == 'w' ? text.find(' ') : std::string_view::npos;
            // A blank ends a word, unless the literal that follows begins with it.
            const std::string_view where =
                    text.substr(0, blank == std::string_view::npos ? blank : blank + next.size());
            length = next.empty() ? std::min(text.size(), blank) : where.find(next);
            if (length == std::string_view::npos || length > blank) {
                const std::string_view rest = text.substr(std::min(text.size(), blank));
                const bool ends = part.type == 'w' && next.compare(0, rest.size(), rest) == 0;
                return ends && isLong() ? Result::CUT_OFF : Result::NO;
            }
        } else if (part.type != 'r') {
            length = readNumber(text, part.type, &number);
            if (length == 0) {
                return (text.empty() || text == "-") && isLong() ? Result::CUT_OFF : Result::NO;
            }
        }
        fields->add(part.name, text.substr(0, length), number);
        text.remove_prefix(length);
    }
    return Result::YES;
}

}  // namespace android::codecreport
