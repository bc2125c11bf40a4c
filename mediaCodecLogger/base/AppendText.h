// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <string.h>

#include <charconv>
#include <limits>
#include <string>
#include <type_traits>

namespace android {

namespace text {

/** Of what a piece may come to. */
template <typename Integer>
struct MaxLength {
    static_assert(std::is_integral<Integer>::value);
    // A digit that the type holds in part, and a sign.
    static constexpr size_t kValue = std::numeric_limits<Integer>::digits10 + 2;
};
template <size_t N>
struct MaxLength<char[N]> {
    static constexpr size_t kValue = N - 1;
};

template <typename Integer>
char* write(char* end, const Integer& value) {
    return std::to_chars(end, end + MaxLength<Integer>::kValue, value).ptr;
}
template <size_t N>
char* write(char* end, const char (&literal)[N]) {
    memcpy(end, literal, N - 1);
    return end + N - 1;
}

}  // namespace text

/**
 * Appends string literals and integers, these in decimal. For the lines that are written while
 * playback is in trouble: it takes a tenth of what a format takes, and the types bound its length.
 */
template <typename... Pieces>
void appendText(std::string& line, const Pieces&... pieces) {
    char buffer[(text::MaxLength<Pieces>::kValue + ...)];
    char* end = buffer;
    ((end = text::write(end, pieces)), ...);
    line.append(buffer, static_cast<size_t>(end - buffer));
}

}  // namespace android
