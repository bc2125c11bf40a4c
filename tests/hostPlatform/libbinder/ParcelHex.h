// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <binder/Parcel.h>

#include <stdio.h>

#include <string>
#include <vector>

namespace android::test {

/** The bytes of |parcel| as hexadecimal words of four bytes, in memory order. */
inline std::string hexOf(const Parcel& parcel) {
    std::string hex;
    for (size_t i = 0; i < parcel.dataSize(); i++) {
        char digits[3];
        snprintf(digits, sizeof(digits), "%02x", parcel.data()[i]);
        if (i > 0 && i % 4 == 0) hex += ' ';
        hex += digits;
    }
    return hex;
}

/** Fills |parcel| with the bytes that |hex| (blanks ignored) stands for, position 0. */
inline void setHex(Parcel* parcel, const std::string& hex) {
    std::vector<uint8_t> bytes;
    std::string digits;
    for (const char c : hex) {
        if (c == ' ') continue;
        digits += c;
        if (digits.size() < 2) continue;
        bytes.push_back(static_cast<uint8_t>(strtoul(digits.c_str(), nullptr, 16)));
        digits.clear();
    }
    parcel->setData(bytes.data(), bytes.size());
    parcel->setDataPosition(0);
}

}  // namespace android::test
