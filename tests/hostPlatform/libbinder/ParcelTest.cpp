// SPDX-License-Identifier: Apache-2.0
// Every expected byte is written down by hand from the layout of Android 11's Parcel.
#include "tests/hostPlatform/libbinder/ParcelHex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utils/String8.h>

#include <functional>

#include "tests/support/LogCapture.h"

namespace android::test {
namespace {

struct WriteCase {
    const char* name;
    std::function<status_t(Parcel&)> write;
    const char* hex;
};

const WriteCase kWrites[] = {
        {"int32", [](Parcel& p) { return p.writeInt32(-2); }, "feffffff"},
        {"int64 without padding before it",
         [](Parcel& p) {
             p.writeInt32(1);
             return p.writeInt64(0x0102030405060708);
         },
         "01000000 08070605 04030201"},
        {"C string of 4", [](Parcel& p) { return p.writeCString("abcd"); }, "61626364 00000000"},
        {"String8 of 4", [](Parcel& p) { return p.writeString8(String8("abcd")); },
         "04000000 61626364 00000000"},
        {"String16 of 2", [](Parcel& p) { return p.writeString16(String16("ab")); },
         "02000000 61006200 00000000"},
        {"empty UTF-8", [](Parcel& p) { return p.writeUtf8AsUtf16(std::string()); },
         "00000000 00000000"},
        {"UTF-8 with NUL inside and a surrogate pair",
         [](Parcel& p) { return p.writeUtf8AsUtf16(std::string("a\0\xf0\x9f\x98\x80", 6)); },
         "04000000 61000000 3dd800de 00000000"},
        {"null UTF-8", [](Parcel& p) { return p.writeUtf8AsUtf16(std::unique_ptr<std::string>()); },
         "ffffffff"},
        {"UTF-8 vector",
         [](Parcel& p) {
             return p.writeUtf8VectorAsUtf16Vector(std::vector<std::string>{"a", ""});
         },
         "02000000 01000000 61000000 00000000 00000000"},
        {"int64 vector",
         [](Parcel& p) {
             return p.writeInt64Vector(std::vector<int64_t>{1, -1});
         },
         "02000000 01000000 00000000 ffffffff ffffffff"},
        {"interface token", [](Parcel& p) { return p.writeInterfaceToken(String16("a.b")); },
         "00000080 ffffffff 54535953 03000000 61002e00 62000000"},
        {"no exception", [](Parcel& p) { return p.writeNoException(); }, "00000000"},
        {"file descriptor", [](Parcel& p) { return p.writeFileDescriptor(258); },
         "852a6466 7f010000 02010000 00000000 00000000 00000000"},
};

TEST(ParcelTest, writesTheBytesOfAndroid11) {
    for (const WriteCase& c : kWrites) {
        Parcel parcel;
        EXPECT_EQ(OK, c.write(parcel)) << c.name;
        EXPECT_EQ(c.hex, hexOf(parcel)) << c.name;
        EXPECT_EQ(parcel.dataSize(), parcel.dataPosition()) << c.name;
    }
}

struct ReadCase {
    const char* name;
    const char* hex;
    // Returns what is worth comparing, as text.
    std::function<std::string(const Parcel&)> read;
    const char* expected;
    size_t position;
};

std::string text(status_t status, const std::string& value) {
    return std::to_string(status) + "|" + value;
}

template <typename T, status_t (Parcel::*Read)(T*) const>
std::string readNumber(const Parcel& parcel) {
    T value = 7;
    const status_t status = (parcel.*Read)(&value);
    return text(status, std::to_string(value));
}

std::string readInt64s(const Parcel& parcel) {
    std::vector<int64_t> values = {5};
    const status_t status = parcel.readInt64Vector(&values);
    std::string joined;
    for (const int64_t value : values) joined += std::to_string(value) + ",";
    return text(status, joined);
}

std::string readUtf8(const Parcel& parcel) {
    std::string value = "old";
    const status_t status = parcel.readUtf8FromUtf16(&value);
    return text(status, value);
}

std::string readUtf8Pointer(const Parcel& parcel) {
    auto value = std::make_unique<std::string>("old");
    const status_t status = parcel.readUtf8FromUtf16(&value);
    return text(status, value == nullptr ? "null" : *value);
}

std::string readString8Value(const Parcel& parcel) {
    return parcel.readString8().string();
}

std::string readCString(const Parcel& parcel) {
    const char* const value = parcel.readCString();
    return value == nullptr ? "null" : value;
}

constexpr auto readI32 = readNumber<int32_t, &Parcel::readInt32>;
constexpr auto readI64 = readNumber<int64_t, &Parcel::readInt64>;

const ReadCase kReads[] = {
        {"int32 at the end", "", readI32, "-61|7", 0},
        {"int64 with four bytes left", "01000000", readI64, "-61|7", 0},
        {"bool at the end", "",
         [](const Parcel& p) {
             bool value = true;
             const status_t status = p.readBool(&value);
             return text(status, std::to_string(value));
         },
         "-61|0", 0},
        {"C string without NUL", "61626364", readCString, "null", 0},
        {"String8 of length -1", "ffffffff 00000000", readString8Value, "", 4},
        {"String8 past the end", "05000000 61626300", readString8Value, "", 4},
        {"String8 without its NUL", "03000000 61626364", readString8Value, "", 8},
        {"C strings read as String8", "66697273 74000000 7365636f 6e640000",
         [](const Parcel& p) { return readString8Value(p) + readString8Value(p); }, "", 8},
        {"UTF-8 at the end keeps the value", "", readUtf8, "-2147483640|old", 0},
        {"UTF-8 of length -1", "ffffffff", readUtf8, "-2147483640|old", 4},
        {"UTF-8 pointer of length -1", "ffffffff", readUtf8Pointer, "0|null", 4},
        {"vector at the end is unchanged", "", readInt64s, "-61|5,", 0},
        {"vector of negative count is unchanged", "ffffffff", readInt64s, "-2147483640|5,", 4},
        {"vector with too few elements is resized", "02000000 01000000 00000000", readInt64s,
         "-61|1,0,", 12},
        {"vector of a count that no memory holds", "ffffff7f 01000000", readInt64s, "-61|5,", 4},
};

TEST(ParcelTest, readsWhatAndroid11Reads) {
    LogCapture log;
    for (const ReadCase& c : kReads) {
        Parcel parcel;
        setHex(&parcel, c.hex);
        EXPECT_EQ(c.expected, c.read(parcel)) << c.name;
        EXPECT_EQ(c.position, parcel.dataPosition()) << c.name;
    }
}

}  // namespace
}  // namespace android::test
