// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <string>

namespace android {

class String8;

/**
 * A byte string. Misuse (a position outside the text, a number too long for its field) ends the
 * process through the fatal log call.
 */
struct AString {
    AString() = default;
    /** A null text gives an empty string and a warning. */
    AString(const char* s);
    AString(const char* s, size_t size);
    AString(const String8& from);
    AString(const AString& from, size_t offset, size_t n);

    void setTo(const char* s);
    void setTo(const char* s, size_t size);
    void setTo(const AString& from, size_t offset, size_t n);

    size_t size() const { return mText.size(); }
    const char* c_str() const { return mText.c_str(); }
    bool empty() const { return mText.empty(); }
    void clear() { mText.clear(); }

    /** Removes white space at both ends. */
    void trim();
    /** Removes n bytes from start, which must lie inside the text. */
    void erase(size_t start, size_t n);

    void append(char c) { mText.push_back(c); }
    void append(const char* s) { mText.append(s); }
    void append(const char* s, size_t size) { mText.append(s, size); }
    void append(const AString& from) { mText.append(from.mText); }
    void append(const AString& from, size_t offset, size_t n);
    void append(int x) { mText += std::to_string(x); }
    void append(unsigned x) { mText += std::to_string(x); }
    void append(long x) { mText += std::to_string(x); }
    void append(unsigned long x) { mText += std::to_string(x); }
    void append(long long x) { mText += std::to_string(x); }
    void append(unsigned long long x) { mText += std::to_string(x); }
    /** Written as "%f"; fatal when that takes more than 15 characters. */
    void append(float x) { append(static_cast<double>(x)); }
    void append(double x);
    void append(void* x);

    void insert(const AString& from, size_t insertionPos);
    void insert(const char* from, size_t size, size_t insertionPos);

    /**
     * Position of the first occurrence at or after start, or -1. Neither text is looked at past
     * an embedded NUL. Fatal when start lies behind the end.
     */
    ssize_t find(const char* substring, size_t start = 0) const;

    size_t hash() const;

    /** Equality compares size and bytes, order compares up to the first NUL. */
    bool operator==(const AString& other) const { return mText == other.mText; }
    bool operator!=(const AString& other) const { return mText != other.mText; }
    bool operator<(const AString& other) const { return compare(other) < 0; }
    bool operator>(const AString& other) const { return compare(other) > 0; }
    int compare(const AString& other) const;

    bool startsWith(const char* prefix) const;
    bool endsWith(const char* suffix) const;
    bool startsWithIgnoreCase(const char* prefix) const;
    bool endsWithIgnoreCase(const char* suffix) const;

    void tolower();

  private:
    std::string mText;
};

/** Formats like printf, without a length limit. The compiler does not check the arguments. */
AString AStringPrintf(const char* format, ...);

}  // namespace android
