// SPDX-License-Identifier: Apache-2.0
#define LOG_TAG "AString"
#include <ctype.h>
#include <log/log.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <functional>

#include <media/stagefright/foundation/AString.h>
#include <utils/String8.h>

namespace android {

AString::AString(const char* s) {
    setTo(s);
}

AString::AString(const char* s, size_t size) : mText(s, size) {}

AString::AString(const String8& from) : mText(from.string(), from.length()) {}

AString::AString(const AString& from, size_t offset, size_t n) {
    setTo(from, offset, n);
}

void AString::setTo(const char* s) {
    if (s == nullptr) ALOGW("a null text becomes an empty string");
    mText = s == nullptr ? "" : s;
}

void AString::setTo(const char* s, size_t size) {
    mText.assign(s, size);
}

void AString::setTo(const AString& from, size_t offset, size_t n) {
    AString piece;
    piece.append(from, offset, n);
    mText = std::move(piece.mText);
}

void AString::trim() {
    const auto isText = [](unsigned char c) { return !isspace(c); };
    mText.erase(std::find_if(mText.rbegin(), mText.rend(), isText).base(), mText.end());
    mText.erase(mText.begin(), std::find_if(mText.begin(), mText.end(), isText));
}

void AString::erase(size_t start, size_t n) {
    LOG_ALWAYS_FATAL_IF(start >= size() || n > size() - start, "erase(%zu, %zu) of %zu bytes",
                        start, n, size());
    mText.erase(start, n);
}

void AString::append(const AString& from, size_t offset, size_t n) {
    LOG_ALWAYS_FATAL_IF(offset > from.size() || n > from.size() - offset,
                        "append(%zu, %zu) of %zu bytes", offset, n, from.size());
    mText.append(from.mText, offset, n);
}

void AString::append(double x) {
    char text[16];
    const int length = snprintf(text, sizeof(text), "%f", x);
    LOG_ALWAYS_FATAL_IF(length < 0 || static_cast<size_t>(length) >= sizeof(text),
                        "append(%f) takes %d characters", x, length);
    mText.append(text);
}

void AString::append(void* x) {
    char text[32];
    snprintf(text, sizeof(text), "%p", x);
    mText.append(text);
}

void AString::insert(const AString& from, size_t insertionPos) {
    insert(from.c_str(), from.size(), insertionPos);
}

void AString::insert(const char* from, size_t size, size_t insertionPos) {
    LOG_ALWAYS_FATAL_IF(insertionPos > mText.size(), "insert at %zu of %zu bytes", insertionPos,
                        mText.size());
    mText.insert(insertionPos, from, size);
}

ssize_t AString::find(const char* substring, size_t start) const {
    LOG_ALWAYS_FATAL_IF(start > size(), "find from %zu in %zu bytes", start, size());
    const char* const match = strstr(c_str() + start, substring);
    return match == nullptr ? -1 : match - c_str();
}

size_t AString::hash() const {
    return std::hash<std::string>()(mText);
}

int AString::compare(const AString& other) const {
    return strcmp(c_str(), other.c_str());
}

bool AString::startsWith(const char* prefix) const {
    return strncmp(c_str(), prefix, strlen(prefix)) == 0;
}

bool AString::endsWith(const char* suffix) const {
    const size_t length = strlen(suffix);
    return size() >= length && strcmp(c_str() + size() - length, suffix) == 0;
}

bool AString::startsWithIgnoreCase(const char* prefix) const {
    return strncasecmp(c_str(), prefix, strlen(prefix)) == 0;
}

bool AString::endsWithIgnoreCase(const char* suffix) const {
    const size_t length = strlen(suffix);
    return size() >= length && strcasecmp(c_str() + size() - length, suffix) == 0;
}

void AString::tolower() {
    const auto lower = [](unsigned char c) { return static_cast<char>(::tolower(c)); };
    std::transform(mText.begin(), mText.end(), mText.begin(), lower);
}

AString AStringPrintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char* text = nullptr;
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) return AString();
    AString result(text, length);
    free(text);
    return result;
}

}  // namespace android
