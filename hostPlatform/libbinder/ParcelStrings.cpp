// SPDX-License-Identifier: Apache-2.0
// Texts in a Parcel: C strings, String8, String16, and std::string carried as UTF-16.
#define LOG_TAG "Parcel"

#include <limits>
#include <memory>

#include <binder/Parcel.h>

#include <string.h>

#include <algorithm>

#include <log/log.h>
#include <utils/String8.h>
#include <utils/Unicode.h>

namespace android {

status_t Parcel::writeCString(const char* str) {
    return write(str, strlen(str) + 1);
}

status_t Parcel::writeString8(const String8& str) {
    if (const status_t err = writeInt32(static_cast<int32_t>(str.bytes())); err != NO_ERROR)
        return err;
    return write(str.string(), str.bytes() + 1);
}

status_t Parcel::writeString16(const char16_t* str, size_t len) {
    if (str == nullptr) return writeInt32(-1);
    if (len >= INT32_MAX / sizeof(char16_t)) return BAD_VALUE;
    if (const status_t err = writeInt32(static_cast<int32_t>(len)); err != NO_ERROR) return err;
    auto* const units = static_cast<char16_t*>(writeInplace((len + 1) * sizeof(char16_t)));
    if (units == nullptr) return mError != NO_ERROR ? mError : status_t{NO_MEMORY};
    memcpy(units, str, len * sizeof(char16_t));
    units[len] = 0;
    return NO_ERROR;
}

status_t Parcel::writeString16(const String16& str) {
    return writeString16(str.string(), str.size());
}

status_t Parcel::writeString16(const std::unique_ptr<String16>& str) {
    return str ? writeString16(*str) : writeInt32(-1);
}

status_t Parcel::writeUtf8AsUtf16(const std::string& str) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(str.data());
    // The conversion counts no units in an empty text, but is not made for one.
    const ssize_t len = str.empty() ? 0 : utf8_to_utf16_length(bytes, str.size());
    if (len < 0 || len > INT32_MAX) return BAD_VALUE;
    std::u16string units(static_cast<size_t>(len) + 1, u'\0');
    if (len > 0) utf8_to_utf16(bytes, str.size(), units.data(), units.size());
    return writeString16(units.data(), static_cast<size_t>(len));
}

status_t Parcel::writeUtf8AsUtf16(const std::unique_ptr<std::string>& str) {
    return str ? writeUtf8AsUtf16(*str) : writeInt32(-1);
}

const char* Parcel::readCString() const {
    if (dataAvail() == 0) return nullptr;
    const auto* const str = reinterpret_cast<const char*>(mData + mDataPos);
    const void* const end = memchr(str, 0, dataAvail());
    if (end == nullptr) return nullptr;
    const size_t len = static_cast<const char*>(end) - str + 1;
    mDataPos += std::min((len + 3) & ~size_t{3}, dataAvail());
    return str;
}

status_t Parcel::readString8(String8* pArg) const {
    const int32_t size = readInt32();
    if (size >= 0 && size < INT32_MAX) {
        const auto* const str =
                static_cast<const char*>(readInplace(static_cast<size_t>(size) + 1));
        if (str != nullptr && str[size] == '\0') {
            return pArg->setTo(str, static_cast<size_t>(size));
        }
    }
    pArg->setTo("", 0);
    return UNEXPECTED_NULL;
}

String8 Parcel::readString8() const {
    String8 text;
    if (readString8(&text) != NO_ERROR) ALOGE("Reading a NULL string not supported here.");
    return text;
}

const char16_t* Parcel::readString16Inplace(size_t* outLen) const {
    const int32_t size = readInt32();
    if (size >= 0 && size < INT32_MAX) {
        const size_t len = static_cast<size_t>(size);
        const auto* const str =
                static_cast<const char16_t*>(readInplace((len + 1) * sizeof(char16_t)));
        if (str != nullptr && str[len] == u'\0') {
            *outLen = len;
            return str;
        }
    }
    *outLen = 0;
    return nullptr;
}

status_t Parcel::readString16(String16* pArg) const {
    size_t len;
    const char16_t* const str = readString16Inplace(&len);
    if (str != nullptr) return pArg->setTo(str, len);
    pArg->setTo(u"", 0);
    return UNEXPECTED_NULL;
}

String16 Parcel::readString16() const {
    String16 text;
    if (readString16(&text) != NO_ERROR) ALOGE("Reading a NULL string not supported here.");
    return text;
}

status_t Parcel::readUtf8FromUtf16(std::string* str) const {
    size_t len;
    const char16_t* const units = readString16Inplace(&len);
    if (units == nullptr) return UNEXPECTED_NULL;
    const ssize_t bytes = len == 0 ? 0 : utf16_to_utf8_length(units, len);
    if (bytes < 0) return BAD_VALUE;
    str->resize(static_cast<size_t>(bytes) + 1);  // the conversion adds a NUL
    if (bytes > 0) utf16_to_utf8(units, len, str->data(), str->size());
    str->resize(static_cast<size_t>(bytes));
    return NO_ERROR;
}

namespace {

// Reads a text that may be null: a null one is a lone length of -1.
template <typename T>
status_t readNullable(const Parcel& parcel, std::unique_ptr<T>* out,
                      status_t (Parcel::*read)(T*) const) {
    out->reset();
    const size_t start = parcel.dataPosition();
    int32_t size;
    const status_t err = parcel.readInt32(&size);
    if (err != NO_ERROR || size < 0) return err;
    parcel.setDataPosition(start);
    auto text = std::make_unique<T>();
    const status_t textErr = (parcel.*read)(text.get());
    if (textErr == NO_ERROR) *out = std::move(text);
    return textErr;
}

}  // namespace

status_t Parcel::readString16(std::unique_ptr<String16>* pArg) const {
    return readNullable<String16>(*this, pArg, &Parcel::readString16);
}

status_t Parcel::readUtf8FromUtf16(std::unique_ptr<std::string>* str) const {
    return readNullable<std::string>(*this, str, &Parcel::readUtf8FromUtf16);
}

}  // namespace android
